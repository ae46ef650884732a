// packet_input_test.cpp - packets in one piece or many, too long, cut off or merged.
#include "net/packet_input.hpp"

#include "app/app_state.hpp"
#include "unit/socket_pair.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

namespace
{

using namespace std::string_literals;

class packet_receiving : public testing::Test
{
protected:
    packet_receiving() = default;
    ~packet_receiving() override
    {
        packet_take(server);
    }
    packet_receiving(const packet_receiving&) = delete;
    packet_receiving& operator=(const packet_receiving&) = delete;

    void feed(std::string_view bytes) const
    {
        ASSERT_TRUE(sockets.feed(bytes));
    }
    int receive()
    {
        return receive_packet(sockets.client(), server);
    }
    /// The payload of the current packet as a text.
    const char* text() const
    {
        return reinterpret_cast<const char*>(server.rx_packet->payload);
    }
    /// Bytes of the payload as they are.
    std::string bytes(std::size_t first, std::size_t length) const
    {
        return {text() + first, length};
    }

    socket_pair sockets;
    server_entry server = {};
};

TEST_F(packet_receiving, has_nothing_while_nothing_came)
{
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_EQ(server.rx_packet, nullptr);
    EXPECT_EQ(server.bytes_received, 0U);
}

TEST_F(packet_receiving, completes_a_packet_in_one_call)
{
    feed(wire_packet(40, 5, 9, "hello"));
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "hello");
    EXPECT_EQ(server.rx_received, 5U);
    EXPECT_EQ(server.bytes_received, 17U);
    const packet_header header = packet_header_read(server.rx_packet->header);
    EXPECT_EQ(header.kind, 40U);
    EXPECT_EQ(header.length, 5);
    EXPECT_EQ(header.extra, 9);
}

TEST_F(packet_receiving, reads_every_number_low_byte_first)
{
    feed("\x04\x03\x02\x01\x01\0\x34\x12\xCD\xAB\xFF\xFE"
         "x"s);
    ASSERT_EQ(receive(), packet_complete);
    const packet_header header = packet_header_read(server.rx_packet->header);
    EXPECT_EQ(header.kind, 0x01020304U);
    EXPECT_EQ(header.length, 1);
    EXPECT_EQ(header.extra, 0x1234);
    EXPECT_EQ(header.param1, 0xABCD);
    EXPECT_EQ(header.param2, 0xFEFF);
}

TEST_F(packet_receiving, receives_packets_that_came_together_one_by_one)
{
    feed(wire_packet(40, 5, 0, "first") + wire_packet(41, 6, 0, "second"));
    ASSERT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "first");
    server.rx_aux = 77;
    const received_packet first = packet_take(server);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(server.rx_packet, nullptr);
    EXPECT_EQ(server.rx_received, 0U);
    ASSERT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "second");
    EXPECT_EQ(server.rx_received, 6U);
    EXPECT_EQ(server.rx_aux, 0U);
    EXPECT_EQ(server.bytes_received, 35U);
    packet_take(server);
    EXPECT_EQ(packet_take(server), nullptr);
    EXPECT_EQ(receive(), packet_pending);
}

TEST_F(packet_receiving, keeps_a_payload_until_its_last_byte)
{
    const std::string payload = "a few bytes, one by one";
    feed(wire_packet(40, static_cast<unsigned>(payload.size()), 0, ""));
    EXPECT_EQ(receive(), packet_pending);
    for (std::size_t index = 0; index + 1 < payload.size(); ++index) {
        feed(payload.substr(index, 1));
        ASSERT_EQ(receive(), packet_pending);
        ASSERT_EQ(receive(), packet_pending);
    }
    feed(payload.substr(payload.size() - 1));
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_EQ(text(), payload);
    EXPECT_EQ(server.bytes_received, 12 + payload.size());
}

TEST_F(packet_receiving, takes_a_partial_header_for_a_whole_one)
{
    const std::string packet = wire_packet(40, 3, 0, "abc");
    feed(packet.substr(0, 5));
    EXPECT_EQ(receive(), packet_pending);
    ASSERT_NE(server.rx_packet, nullptr);
    EXPECT_EQ(server.bytes_received, 5U);
    feed(packet.substr(5));
    ASSERT_EQ(receive(), packet_complete);
    EXPECT_EQ(bytes(0, 3), "\0\0\0"s);
    EXPECT_EQ(sockets.left_for_client(), "\0\0\0\0abc"s);
}

TEST_F(packet_receiving, drops_a_partial_header_without_a_length)
{
    const std::string packet = wire_packet(40, 3, 0, "abc");
    feed(packet.substr(0, 4));
    EXPECT_EQ(receive(), packet_pending);
    ASSERT_NE(server.rx_packet, nullptr);
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_EQ(server.rx_packet, nullptr);
}

TEST_F(packet_receiving, discards_packets_without_payload)
{
    feed(wire_packet(40, 0, 0, "") + wire_packet(41, 4, 0, "next"));
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_EQ(server.rx_packet, nullptr);
    EXPECT_EQ(server.bytes_received, 12U);
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "next");
}

TEST_F(packet_receiving, fails_on_a_size_hint_without_a_length)
{
    feed(wire_packet(204, 0, 5, ""));
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_NE(server.rx_packet, nullptr);
    feed("x");
    EXPECT_EQ(receive(), packet_failed);
    EXPECT_EQ(server.rx_packet, nullptr);
}

TEST_F(packet_receiving, terminates_texts_within_the_buffer)
{
    const struct {
        unsigned length;
        std::size_t text_length;
    } rows[] = {{1, 1}, {4094, 4094}, {4095, 4095}, {4096, 4095}};
    for (const auto& row : rows) {
        feed(wire_packet(199, row.length, 0, std::string(row.length, 't')));
        ASSERT_EQ(receive(), packet_complete) << row.length;
        EXPECT_EQ(text(), std::string(row.text_length, 't')) << row.length;
        packet_take(server);
    }
}

TEST_F(packet_receiving, keeps_the_last_byte_of_binary_kinds)
{
    feed(wire_packet(200, 4096, 0, std::string(4096, 'b')));
    ASSERT_EQ(receive(), packet_complete);
    EXPECT_EQ(bytes(0, 4096), std::string(4096, 'b'));
}

TEST_F(packet_receiving, keeps_4096_bytes_of_a_longer_packet_and_waits_for_all)
{
    for (const unsigned length : {4097U, 5000U, 65'535U}) {
        feed(wire_packet(40, length, 0, std::string(length, 'l')));
        const unsigned reads = (length + 4095) / 4096;
        for (unsigned done = 1; done < reads; ++done)
            ASSERT_EQ(receive(), packet_pending) << length;
        ASSERT_EQ(receive(), packet_complete) << length;
        EXPECT_EQ(text(), std::string(4095, 'l'));
        EXPECT_EQ(sockets.left_for_client(), "");
        packet_take(server);
    }
    EXPECT_EQ(packet_payload_length({40, 4096, 0, 0, 0}), 4096U);
    EXPECT_EQ(packet_payload_length({40, 4097, 0, 0, 0}), 4096U);
    EXPECT_EQ(packet_payload_length({40, 7, 0, 0, 0}), 7U);
}

TEST_F(packet_receiving, asks_for_the_whole_length_again_and_takes_bytes_that_follow)
{
    feed(wire_packet(40, 3000, 0, std::string(1000, '1')));
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_EQ(server.rx_received, 1000U);
    feed(std::string(2000, '2') + std::string(1500, '3'));
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_EQ(text(), std::string(1000, '1') + std::string(2000, '2'));
    EXPECT_EQ(server.rx_received, 4000U);
    EXPECT_EQ(sockets.left_for_client(), std::string(500, '3'));
}

TEST_F(packet_receiving, terminates_only_texts_that_run_into_others)
{
    for (const unsigned kind : {199U, 200U}) {
        feed(wire_packet(kind, 100, 0, std::string(50, '1')));
        ASSERT_EQ(receive(), packet_pending);
        feed(std::string(60, '2'));
        ASSERT_EQ(receive(), packet_complete);
        EXPECT_EQ(bytes(99, 3), kind == 199 ? "2\0002"s : "222"s);
        packet_take(server);
    }
}

TEST_F(packet_receiving, copies_nothing_past_its_buffer)
{
    feed(wire_packet(204, 4096, 0, std::string(4095, '1')));
    EXPECT_EQ(receive(), packet_pending);
    feed(std::string(4096, '2'));
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_EQ(bytes(4094, 2), "12");
    EXPECT_EQ(server.rx_received, 8191U);
}

TEST_F(packet_receiving, fails_at_the_end_of_the_connection)
{
    const struct {
        const char* behaviour;
        std::string before;
        int calls_before;
    } rows[] = {
        {"before a header", "", 0},
        {"inside a header", wire_packet(40, 5, 0, "").substr(0, 7), 0},
        {"behind a header", wire_packet(40, 5, 0, ""), 0},
        {"inside a payload", wire_packet(40, 5, 0, "ab"), 1},
    };
    for (const auto& row : rows) {
        socket_pair ending;
        ASSERT_TRUE(ending.feed(row.before)) << row.behaviour;
        for (int call = 0; call < row.calls_before; ++call)
            ASSERT_EQ(receive_packet(ending.client(), server), packet_pending) << row.behaviour;
        ending.close_server();
        EXPECT_EQ(receive_packet(ending.client(), server), packet_failed) << row.behaviour;
        EXPECT_EQ(server.rx_packet, nullptr) << row.behaviour;
        EXPECT_EQ(receive_packet(ending.client(), server), packet_failed) << row.behaviour;
    }
}

TEST_F(packet_receiving, delivers_what_came_before_the_end)
{
    feed(wire_packet(40, 4, 0, "last"));
    sockets.close_server();
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "last");
    packet_take(server);
    EXPECT_EQ(receive(), packet_failed);
}

TEST_F(packet_receiving, fails_on_a_connection_that_was_reset)
{
    for (const bool in_payload : {false, true}) {
        socket_pair reset;
        if (in_payload) {
            ASSERT_TRUE(reset.feed(wire_packet(40, 5, 0, "")));
            ASSERT_EQ(receive_packet(reset.client(), server), packet_pending);
        }
        // A peer that closes with unread bytes resets the connection.
        ASSERT_EQ(send(reset.client(), "x", 1, 0), 1);
        reset.close_server();
        EXPECT_EQ(receive_packet(reset.client(), server), packet_failed);
        EXPECT_EQ(server.rx_packet, nullptr);
    }
}

TEST_F(packet_receiving, keeps_the_packets_of_two_servers_apart)
{
    const socket_pair other_sockets;
    server_entry other = {};
    feed(wire_packet(40, 4, 0, "on"));
    ASSERT_TRUE(other_sockets.feed(wire_packet(41, 5, 0, "ot")));
    EXPECT_EQ(receive(), packet_pending);
    EXPECT_EQ(receive_packet(other_sockets.client(), other), packet_pending);
    feed("e.");
    ASSERT_TRUE(other_sockets.feed("her"));
    EXPECT_EQ(receive_packet(other_sockets.client(), other), packet_complete);
    EXPECT_EQ(receive(), packet_complete);
    EXPECT_STREQ(text(), "one.");
    const received_packet others_packet = packet_take(other);
    EXPECT_STREQ(reinterpret_cast<const char*>(others_packet->payload), "other");
}

} // namespace
