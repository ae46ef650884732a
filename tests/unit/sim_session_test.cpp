// sim_session_test.cpp - one client's connection: the pace, the queues and their bounds.
#include "server/sessions/client_session.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using namespace std::chrono_literals;

constexpr tovrik::time_point start{1000s};

/// A session and the other end of its socket.
struct pair_of_ends {
    pair_of_ends()
    {
        int fds[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
        session = std::make_unique<tovrik::client_session>(fds[0], home, 1);
        peer = unique_fd{fds[1]};
    }

    std::string arrived() const
    {
        char block[65536];
        const ssize_t count = recv(peer.get(), block, sizeof block, MSG_DONTWAIT);
        return {block, count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    tovrik::channel home;
    std::unique_ptr<tovrik::client_session> session;
    unique_fd peer;
};

tovrik::wire_bytes bytes_of(const std::string& text)
{
    return std::make_shared<std::string>(text);
}

TEST(sim_session, sends_one_packet_for_every_pace_that_has_passed)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    EXPECT_EQ(session_send_time(session), tovrik::never);
    for (const char* text : {"one", "two", "three"})
        EXPECT_TRUE(session_queue(session, bytes_of(text)));

    session_send(session, start, 1000ms);
    EXPECT_EQ(ends.arrived(), "one") << "the first goes out at once";
    EXPECT_EQ(session_send_time(session), start + 1000ms);
    session_send(session, start + 999ms, 1000ms);
    EXPECT_EQ(ends.arrived(), "");
    session_send(session, start + 1000ms, 1000ms);
    EXPECT_EQ(ends.arrived(), "two");
    session_send(session, start + 9000ms, 1000ms);
    EXPECT_EQ(ends.arrived(), "three") << "a long pause earns nothing";
    EXPECT_EQ(session_send_time(session), tovrik::never);
}

TEST(sim_session, sends_all_at_once_without_a_pace)
{
    pair_of_ends ends;
    for (const char* text : {"one", "two", "three"})
        session_queue(*ends.session, bytes_of(text));
    session_send(*ends.session, start, 0ms);
    EXPECT_EQ(ends.arrived(), "onetwothree");
}

TEST(sim_session, drops_the_oldest_transmissions_but_no_assured_packet)
{
    pair_of_ends ends;
    for (const char* text : {"1", "2", "3", "4", "5"})
        session_queue_transmission(*ends.session, {bytes_of(text)}, 3);
    session_queue(*ends.session, bytes_of("A"));
    session_send(*ends.session, start, 0ms);
    EXPECT_EQ(ends.arrived(), "A345");
}

TEST(sim_session, takes_no_more_assured_packets_than_its_bound)
{
    pair_of_ends ends;
    const tovrik::wire_bytes bytes = bytes_of("x");
    for (std::size_t i = 0; i < tovrik::max_assured_packets; ++i)
        ASSERT_TRUE(session_queue(*ends.session, bytes));
    EXPECT_FALSE(session_queue(*ends.session, bytes));
    EXPECT_EQ(ends.session->assured.size(), tovrik::max_assured_packets);
}

TEST(sim_session, lets_ticks_and_transmissions_take_turns)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    for (const char* text : {"1", "2", "3"})
        session_queue_transmission(session, {bytes_of(text)}, 10);
    std::string order;
    for (int i = 0; i < 6; ++i) {
        session.tick = bytes_of("t");
        session_send(session, start + i * 1s, 1000ms);
        order += ends.arrived();
    }
    EXPECT_EQ(order, "t1t2t3");
}

TEST(sim_session, lets_a_report_take_its_turn)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    for (const char* text : {"1", "2", "3"})
        session_queue_transmission(session, {bytes_of(text)}, 10);
    for (const char* text : {"a", "b", "c", "d"})
        session.report.push_back(bytes_of(text));
    session.tick = bytes_of("t");
    session_send(session, start, 0ms);
    EXPECT_EQ(ends.arrived(), "ta1b2c3d");
}

TEST(sim_session, keeps_packets_whole_when_the_socket_is_full)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    const int small = 4096;
    setsockopt(session.socket.get(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    std::string expected;
    for (char c = 'a'; c <= 'z'; ++c) {
        const std::string text(4000, c);
        session_queue(session, bytes_of(text));
        expected += text;
    }
    std::string received;
    for (int i = 0; i < 1000 && received.size() < expected.size(); ++i) {
        session_send(session, start, 0ms);
        if (received.empty()) {
            EXPECT_TRUE(session.waiting_to_write);
            EXPECT_EQ(session_send_time(session), tovrik::never) << "only the socket can tell";
        }
        received += ends.arrived();
    }
    EXPECT_EQ(received, expected);
    EXPECT_FALSE(session.gone);
}

TEST(sim_session, keeps_its_place_only_while_its_client_reads)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    session_queue(session, bytes_of(std::string(4'000'000, 'a')));
    session_send(session, start, 0ms);
    ASSERT_TRUE(session.waiting_to_write);
    EXPECT_EQ(session_stall_end(session), start + 15min);
    session_send(session, start + 14min, 0ms);
    EXPECT_FALSE(session.gone);
    EXPECT_FALSE(ends.arrived().empty());
    session_send(session, start + 14min, 0ms);
    EXPECT_EQ(session_stall_end(session), start + 29min) << "it has taken something";
    session_send(session, start + 28min, 0ms);
    EXPECT_FALSE(session.gone);
    session_send(session, start + 29min, 0ms);
    EXPECT_TRUE(session.gone);
}

TEST(sim_session, forgets_all_but_the_last_packet_when_it_closes)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    session_queue(session, bytes_of("waiting"));
    session_queue_transmission(session, {bytes_of("waiting")}, 10);
    session.tick = bytes_of("tick");
    session_close(session, bytes_of("end"), start + 5s);
    EXPECT_FALSE(session_queue(session, bytes_of("late")));
    session_queue_transmission(session, {bytes_of("late")}, 10);
    session_close(session, bytes_of("again"), start + 9s);
    EXPECT_EQ(session.drop_at, start + 5s);

    session_send(session, start, 0ms);
    EXPECT_EQ(ends.arrived(), "end");
    char byte = 0;
    EXPECT_EQ(recv(ends.peer.get(), &byte, 1, MSG_DONTWAIT), 0) << "the stream has ended";
}

TEST(sim_session, ends_its_own_side_only_and_goes_on_listening)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    session_close(session, bytes_of("end"), start + 5s);
    session_send(session, start, 0ms);
    EXPECT_EQ(ends.arrived(), "end");
    EXPECT_FALSE(session.gone) << "closing now could lose what the client has not read yet";
    ASSERT_EQ(send(ends.peer.get(), "heard", 5, MSG_NOSIGNAL), 5);
    session_receive(session);
    EXPECT_EQ(session.input, "heard");
    EXPECT_FALSE(session.gone);
}

TEST(sim_session, finishes_the_packet_under_way_before_it_closes)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    const int small = 4096;
    setsockopt(session.socket.get(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    const std::string long_text(60000, 'x');
    session_queue(session, bytes_of(long_text));
    session_send(session, start, 0ms);
    ASSERT_TRUE(session.sending);
    session_close(session, bytes_of("end"), start + 5s);
    std::string received;
    for (int i = 0; i < 1000 && !received.ends_with("end"); ++i) {
        received += ends.arrived();
        session_send(session, start, 0ms);
    }
    EXPECT_EQ(received, long_text + "end");
}

TEST(sim_session, takes_packets_from_bytes_that_come_in_pieces)
{
    pair_of_ends ends;
    auto& session = *ends.session;
    const std::string bytes =
        tovrik::encode_packet({.kind = 81, .payload = "digest", .param1 = 7}) +
        tovrik::encode_packet({.kind = 2});
    tovrik::packet taken;
    for (std::size_t i = 0; i + 13 < bytes.size(); ++i) {
        ASSERT_EQ(send(ends.peer.get(), &bytes[i], 1, 0), 1);
        session_receive(session);
        ASSERT_EQ(session_take_packet(session, taken), tovrik::packet_taken::none) << i;
    }
    ASSERT_EQ(send(ends.peer.get(), &bytes[bytes.size() - 13], 13, 0), 13);
    session_receive(session);
    ASSERT_EQ(session_take_packet(session, taken), tovrik::packet_taken::whole);
    EXPECT_EQ(taken.kind, 81U);
    EXPECT_EQ(taken.payload, "digest");
    EXPECT_EQ(taken.param1, 7);
    ASSERT_EQ(session_take_packet(session, taken), tovrik::packet_taken::whole);
    EXPECT_EQ(taken.kind, 2U);
    EXPECT_EQ(taken.payload, "");
    EXPECT_EQ(session_take_packet(session, taken), tovrik::packet_taken::none);
    EXPECT_FALSE(session.gone);
}

TEST(sim_session, reads_a_bounded_amount_in_a_turn)
{
    pair_of_ends ends;
    const std::string flood(60000, '\0');
    ASSERT_EQ(send(ends.peer.get(), flood.data(), flood.size(), 0), 60000);
    session_receive(*ends.session);
    EXPECT_GT(ends.session->input.size(), 0U);
    EXPECT_LE(ends.session->input.size(), tovrik::max_read_bytes_per_turn + 4096);
}

TEST(sim_session, is_gone_when_the_client_has_hung_up)
{
    pair_of_ends ends;
    ends.peer = unique_fd{};
    session_receive(*ends.session);
    EXPECT_TRUE(ends.session->gone);
    EXPECT_FALSE(session_queue(*ends.session, bytes_of("late")));

    pair_of_ends others;
    others.peer = unique_fd{};
    session_queue(*others.session, bytes_of("x"));
    session_send(*others.session, start, 0ms);
    EXPECT_TRUE(others.session->gone) << "a failed write tells it too";
}

} // namespace
