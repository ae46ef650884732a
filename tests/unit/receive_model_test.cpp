// receive_model_test.cpp - packets out of streams that are cut anywhere, beside their model.
#include "models/receiver_pair.hpp"
#include "support/generated_cases.hpp"
#include "unit/own_clock.hpp"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

std::size_t make_length(case_choices& choices)
{
    if (choices.chance(70))
        return choices.number(40);
    return choices.pick<std::size_t>(
        {0, 0, 1, 4083, 4084, 4094, 4095, 4096, 4097, 4108, 5000, 8192, 65'535, 300, 3000});
}

unsigned make_kind(case_choices& choices)
{
    return choices.pick<unsigned>({0, 27, 40, 198, 199, 200, 204, 205, 255, 256 + 40, 65'536 + 199,
                                   0x7FFFFFFF, 0x80000000, 0xFFFFFFFF});
}

/// A packet whose header mostly tells the truth about its length.
std::string make_packet(case_choices& choices)
{
    const std::size_t length = make_length(choices);
    const std::size_t announced = choices.chance(90) ? length : make_length(choices);
    const auto extra = static_cast<unsigned>(choices.chance(70) ? 0 : choices.number(65'535));
    std::string payload = choices.hostile_text(20);
    if (choices.chance(10))
        payload += '\0';
    payload.resize(std::min<std::size_t>(length, 9000), choices.pick<char>({'x', '\0', '\xFF'}));
    return wire_packet(make_kind(choices), static_cast<unsigned>(announced), extra, payload);
}

/// Where the stream is cut: anywhere, or where a header or payload ends, give or take a byte.
std::size_t make_cut(case_choices& choices, std::size_t size)
{
    if (choices.chance(50))
        return choices.number(size);
    return std::min(size, choices.pick<std::size_t>({1, 4, 11, 12, 13, 14, 24, 4107, 4108, size}));
}

void send_pieces(receiver_pair& both, case_choices& choices, std::string stream)
{
    while (!stream.empty()) {
        const std::size_t cut = make_cut(choices, stream.size());
        ASSERT_TRUE(both.feed(stream.substr(0, cut)));
        stream.erase(0, cut);
        for (std::size_t calls = choices.number(3); calls > 0; --calls)
            ASSERT_STREQ(both.receive(), nullptr);
    }
}

TEST(receive_model, takes_the_same_packets_out_of_a_stream)
{
    own_clock clock;
    clock.ask_sockets_at_once();
    run_generated_cases([](case_choices& choices) {
        receiver_pair both;
        std::string stream;
        for (std::size_t count = 1 + choices.number(3); count > 0; --count)
            stream += make_packet(choices);
        if (choices.chance(20))
            stream = choices.damaged(stream, std::string{"\0\xFF(a", 4});
        send_pieces(both, choices, stream);
        if (choices.chance(50))
            both.end();
        for (std::size_t calls = choices.number(6); calls > 0; --calls)
            ASSERT_STREQ(both.receive(), nullptr);
    });
}

/// Sends a packet's header whole and its payload in pieces, with a call after each.
void expect_packet(const socket_pair& sockets, server_entry& server, const std::string& packet,
                   case_choices& choices)
{
    std::size_t sent = receive_model_header_bytes;
    ASSERT_TRUE(sockets.feed(packet.substr(0, sent)));
    while (sent < packet.size()) {
        ASSERT_EQ(receive_packet(sockets.client(), server), packet_pending);
        const std::size_t cut = 1 + choices.number(packet.size() - sent - 1);
        ASSERT_TRUE(sockets.feed(packet.substr(sent, cut)));
        sent += cut;
    }
    ASSERT_EQ(receive_packet(sockets.client(), server), packet_complete);
    const received_packet taken = packet_take(server);
    ASSERT_EQ(std::memcmp(taken.get(), packet.data(), packet.size()), 0);
}

/// Needs no model: packets are received as they were sent, each whole before the next begins.
TEST(receive_model, receives_what_was_sent)
{
    own_clock clock;
    clock.ask_sockets_at_once();
    run_generated_cases(
        [](case_choices& choices) {
            const socket_pair sockets;
            server_entry server = {};
            for (std::size_t count = 1 + choices.number(2); count > 0; --count) {
                const std::string payload =
                    choices.hostile_text(choices.chance(5) ? 4094 : 100) + 'x';
                expect_packet(sockets, server,
                              wire_packet(make_kind(choices), static_cast<unsigned>(payload.size()),
                                          0, payload),
                              choices);
            }
            packet_take(server);
        },
        generated_case_count / 4);
}

} // namespace
