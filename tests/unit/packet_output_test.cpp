// packet_output_test.cpp - the bytes that go out, and sockets that accept none.
#include "net/packet_output.hpp"
#include "net/readiness.hpp"

#include "support/patience.hpp"
#include "unit/socket_pair.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>

namespace
{

using namespace std::chrono_literals;
using namespace std::string_literals;

/// Fills the client's socket until it accepts nothing more.
void fill_socket(const socket_pair& sockets)
{
    const std::string block(4096, 'x');
    for (const std::size_t size : {block.size(), std::size_t{1U}}) {
        while (send(sockets.client(), block.data(), size, MSG_DONTWAIT) > 0)
            continue;
    }
}

TEST(send_packet, writes_header_and_text_without_a_terminator)
{
    const socket_pair sockets;
    EXPECT_EQ(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), 20);
    EXPECT_EQ(sockets.sent_by_client(), "\x02\0\0\0\x08\0\0\0\0\0\0\0Good Bye"s);
}

TEST(send_packet, formats_its_arguments)
{
    const socket_pair sockets;
    EXPECT_EQ(send_packet(sockets.client(), 95, 0, 0, "%s", "1"), 13);
    EXPECT_EQ(sockets.sent_by_client(), "\x5F\0\0\0\x01\0\0\0\0\0\0\0"s + "1");
    EXPECT_EQ(send_packet(sockets.client(), 101, 0, 0, "%s\t%d%%", "%n%s", -7), 20);
    EXPECT_EQ(sockets.sent_by_client(), "\x65\0\0\0\x08\0\0\0\0\0\0\0%n%s\t-7%"s);
}

TEST(send_packet, writes_every_number_low_byte_first)
{
    const socket_pair sockets;
    EXPECT_EQ(send_packet(sockets.client(), 1, 0x1234, 0xABCD, "x"), 13);
    EXPECT_EQ(sockets.sent_by_client(), "\x01\0\0\0\x01\0\0\0\x34\x12\xCD\xABx"s);
    const std::string text(300, 'y');
    EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, "%s", text.c_str()), 312);
    EXPECT_EQ(sockets.sent_by_client(), "\x01\0\0\0\x2C\x01\0\0\0\0\0\0"s + text);
}

TEST(send_packet, sends_an_empty_text_as_a_header)
{
    const socket_pair sockets;
    EXPECT_EQ(send_packet(sockets.client(), 148, 0, 0, "%s", ""), 12);
    EXPECT_EQ(sockets.sent_by_client(), "\x94\0\0\0\0\0\0\0\0\0\0\0"s);
}

TEST(send_packet, cuts_texts_after_4092_characters)
{
    const socket_pair sockets;
    for (const std::size_t length : {4091U, 4092U, 4093U, 4096U, 5000U, 100'000U}) {
        const std::string text(length, 'z');
        const std::string kept = text.substr(0, 4092);
        EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, "%s", text.c_str()),
                  static_cast<ssize_t>(12 + kept.size()));
        EXPECT_EQ(sockets.sent_by_client(),
                  wire_packet(1, static_cast<unsigned>(kept.size()), 0, kept));
    }
}

TEST(send_packet, sends_binary_kinds_as_a_header_of_length_0)
{
    const socket_pair sockets;
    const std::string bytes = "raw bytes %s%s%s%n";
    EXPECT_EQ(send_packet(sockets.client(), 200, 9, 7, bytes.c_str(), 0), 12);
    EXPECT_EQ(sockets.sent_by_client(), "\xC8\0\0\0\0\0\0\0\x09\0\x07\0"s);
    EXPECT_EQ(send_packet(sockets.client(), 0x01020304, 0, 0, bytes.c_str(), 0), 12);
    EXPECT_EQ(sockets.sent_by_client(), "\x04\x03\x02\x01\0\0\0\0\0\0\0\0"s);
    EXPECT_EQ(send_packet(sockets.client(), 199, 9, 0, "text"), 16);
    EXPECT_EQ(sockets.sent_by_client(), "\xC7\0\0\0\x04\0\0\0\x09\0\0\0text"s);
}

TEST(send_packet, bounds_the_bytes_of_a_binary_kind)
{
    const socket_pair sockets;
    const std::string bytes(65'535, 'b');
    EXPECT_EQ(send_packet(sockets.client(), 200, 65'535, 0, bytes.c_str(), 0), 12);
    EXPECT_EQ(sockets.sent_by_client(), "\xC8\0\0\0\0\0\0\0\xFF\xFF\0\0"s);
}

TEST(send_packet, sends_nothing_without_a_format)
{
    const socket_pair sockets;
    const char* none = nullptr;
    EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, none, 0), 0);
    EXPECT_EQ(send_packet(sockets.client(), 200, 4, 0, none, 0), 0);
    EXPECT_EQ(sockets.sent_by_client(), "");
}

TEST(send_packet, drops_the_packet_when_the_socket_is_full)
{
    const socket_pair sockets;
    fill_socket(sockets);
    EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, "late"), 0);
    EXPECT_EQ(sockets.sent_by_client().find("late"), std::string::npos);
    EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, "in time"), 19);
    EXPECT_EQ(sockets.sent_by_client(), wire_packet(1, 7, 0, "in time"));
}

TEST(send_packet, does_not_wait_for_space)
{
    const socket_pair sockets;
    fill_socket(sockets);
    auto shortest = std::chrono::nanoseconds::max(); // a busy machine may delay some
    for (int count = 0; count < 20; ++count) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(send_packet(sockets.client(), 1, 0, 0, "late"), 0);
        shortest = std::min(shortest, std::chrono::steady_clock::now() - begin);
    }
    EXPECT_GE(shortest, 200us);
    EXPECT_LT(shortest, 100ms);
}

TEST(send_packet, does_not_wait_for_space_for_its_second_half_either)
{
    const socket_pair sockets;
    const int smallest = 1;
    setsockopt(sockets.client(), SOL_SOCKET, SO_SNDBUF, &smallest, sizeof smallest);
    // A send that waits would wait for so long, and not for ever.
    const timeval limit = {.tv_sec = default_patience / 1s, .tv_usec = 0};
    setsockopt(sockets.client(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    ASSERT_EQ(send(sockets.client(), "x", 1, 0), 1);
    ASSERT_EQ(wait_ready(sockets.client(), for_writing, 0), 1) << "there is some space";
    const auto begin = std::chrono::steady_clock::now();
    const ssize_t sent =
        send_packet(sockets.client(), 1, 0, 0, "%s", std::string(4092, 'z').c_str());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, default_patience / 2);
    EXPECT_GT(sent, 0);
    EXPECT_LT(sent, 12 + 4092) << "it would have fitted, and nothing was tested";
}

TEST(send_packet, fails_without_a_signal_when_the_server_has_gone)
{
    socket_pair sockets;
    sockets.close_server();
    EXPECT_LT(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), 0);
}

TEST(send_packet, sends_nothing_to_a_server_that_is_not_connected)
{
    EXPECT_EQ(send_packet(0, 2, 0, 0, "Good Bye"), 0);
    EXPECT_EQ(send_packet(-1, 2, 0, 0, "Good Bye"), 0);
}

TEST(wait_ready, distinguishes_readable_from_silent)
{
    socket_pair sockets;
    EXPECT_EQ(wait_ready(sockets.client(), for_reading, 0), 0);
    ASSERT_TRUE(sockets.feed("x"));
    EXPECT_EQ(wait_ready(sockets.client(), for_reading, 0), 1);
    EXPECT_EQ(wait_ready(sockets.client(), 2, 0), 1);
    EXPECT_EQ(sockets.left_for_client(), "x");
    sockets.close_server();
    EXPECT_EQ(wait_ready(sockets.client(), for_reading, 0), 1);
}

TEST(wait_ready, distinguishes_writable_from_full)
{
    const socket_pair sockets;
    EXPECT_EQ(wait_ready(sockets.client(), for_writing, 0), 1);
    fill_socket(sockets);
    EXPECT_EQ(wait_ready(sockets.client(), for_writing, 0), 0);
}

TEST(wait_ready, waits_for_the_given_number_of_seconds)
{
    const socket_pair sockets;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(wait_ready(sockets.client(), for_reading, 1), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s);
}

TEST(wait_ready, refuses_anything_but_a_socket)
{
    EXPECT_EQ(wait_ready(0, for_reading, 0), -1);
    EXPECT_EQ(wait_ready(-1, for_reading, 0), -1);
    int closed = -1;
    {
        const socket_pair sockets;
        closed = sockets.client();
    }
    EXPECT_EQ(wait_ready(closed, for_reading, 0), -1);
}

TEST(wait_ready, knows_descriptors_of_any_number)
{
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = limit.rlim_max;
    if (limit.rlim_max < 2000 || setrlimit(RLIMIT_NOFILE, &limit) != 0)
        GTEST_SKIP() << "no more than " << limit.rlim_max << " descriptors here";
    const socket_pair sockets;
    const unique_fd high(fcntl(sockets.client(), F_DUPFD_CLOEXEC, 1500));
    ASSERT_TRUE(high);
    EXPECT_EQ(wait_ready(high.get(), for_reading, 0), 0);
    EXPECT_EQ(wait_ready(high.get(), for_writing, 0), 1);
    EXPECT_EQ(send_packet(high.get(), 1, 0, 0, "x"), 13);
}

} // namespace
