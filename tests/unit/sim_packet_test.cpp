// sim_packet_test.cpp - the practice server's packets, byte by byte.
#include "server/protocol/packet.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

#include <string>
#include <zlib.h>

namespace
{

using namespace std::string_literals;

TEST(sim_packet, is_twelve_header_bytes_with_the_low_byte_first_and_the_payload)
{
    const tovrik::packet sent{
        .kind = 0x01020304, .payload = "ab", .param1 = 0x0708, .param2 = 0x090A, .extra = 0x0506};
    EXPECT_EQ(tovrik::encode_packet(sent), "\x04\x03\x02\x01\x02\x00\x06\x05\x08\x07\x0A\x09"
                                           "ab"s);
}

TEST(sim_packet, reads_a_header_back)
{
    const tovrik::wire_header header =
        tovrik::decode_header("\x44\x33\x22\xFF\xFE\xFF\x02\x01\x00\x80\x0A\x09"s);
    EXPECT_EQ(header.kind, 0xFF223344U);
    EXPECT_EQ(header.length, 0xFFFE);
    EXPECT_EQ(header.extra, 0x0102);
    EXPECT_EQ(header.param1, 0x8000);
    EXPECT_EQ(header.param2, 0x090A);
}

TEST(sim_packet, cuts_a_payload_at_what_a_client_can_take)
{
    const std::string bytes = tovrik::encode_packet({.kind = 1, .payload = std::string(5000, 'x')});
    EXPECT_EQ(bytes.size(), tovrik::header_bytes + 4096);
    EXPECT_EQ(tovrik::decode_header(bytes).length, 4096);
}

TEST(sim_packet, announces_a_replay_in_both_parameters_and_is_never_empty)
{
    const tovrik::packet announcement = tovrik::replay_announcement_packet(70000);
    EXPECT_EQ(announcement.kind, 27U);
    EXPECT_EQ(announcement.param1, 70000 - 65536);
    EXPECT_EQ(announcement.param2, 1);
    EXPECT_FALSE(announcement.payload.empty());
}

TEST(sim_packet, takes_plain_transmissions_that_leave_room_for_a_terminator)
{
    EXPECT_TRUE(tovrik::plain_transmission(std::string(4095, 'x')));
    EXPECT_FALSE(tovrik::plain_transmission(std::string(4096, 'x')));
    EXPECT_FALSE(tovrik::plain_transmission(""));
}

TEST(sim_packet, compresses_with_a_hint_that_leaves_room_for_a_terminator)
{
    for (const std::size_t size : {1U, 3U, 4U, 5U, 400U, 4095U, 60000U}) {
        SCOPED_TRACE(size);
        const std::string xml(size, 'x');
        const auto made = tovrik::compressed_transmission(xml);
        ASSERT_TRUE(made);
        EXPECT_EQ(made->kind, 204U);
        const std::size_t room = std::size_t{4} * made->extra;
        ASSERT_GT(room, size);
        std::string unpacked(room, '\0');
        uLongf length = room;
        ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(unpacked.data()), &length,
                             reinterpret_cast<const Bytef*>(made->payload.data()),
                             made->payload.size()),
                  Z_OK);
        EXPECT_EQ(unpacked.substr(0, length), xml);
    }
}

TEST(sim_packet, refuses_what_does_not_fit_compressed)
{
    std::string noise;
    std::uint32_t state = 1;
    while (noise.size() < 6000) {
        state = state * 1664525 + 1013904223;
        noise += static_cast<char>(state >> 24);
    }
    EXPECT_FALSE(tovrik::compressed_transmission(noise));
    EXPECT_FALSE(tovrik::compressed_transmission(std::string(300000, 'x'))) << "hint above 16 bits";
    EXPECT_FALSE(tovrik::compressed_transmission(""));
}

} // namespace
