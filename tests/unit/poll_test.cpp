// poll_test.cpp - one cycle over all servers: which are read, how much, and the idle rule.
#include "unit/net_fixture.hpp"

#include "app/app_state.hpp"
#include "net/connection_end.hpp"
#include "support/open_files.hpp"
#include "ui/pane.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <unistd.h>

namespace
{

const wire_packet heartbeat = {148, "^"};
const status_line closed_line = {"Connection closed by server", 5};

class poll_cycle : public net_test
{
};

TEST_F(poll_cycle, arms_the_next_alarm)
{
    alarm(0);
    poll_all();
    EXPECT_EQ(alarm(0), 1U);
}

TEST_F(poll_cycle, takes_one_packet_from_a_server_at_a_time)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    server.send({103, "first"});
    server.send({103, "second"});
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"first", 2}}));
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"first", 2}, {"second", 2}}));
    poll_all();
    EXPECT_EQ(said().size(), 2U);
}

TEST_F(poll_cycle, drops_a_partial_header_next_time_though_nothing_more_came)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    server.send_bytes("\1\2\3");
    poll_all();
    ASSERT_NE(entry.rx_packet, nullptr);
    poll_all();
    EXPECT_EQ(entry.rx_packet, nullptr);
    server.send({103, "whole"});
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"whole", 2}}));
}

TEST_F(poll_cycle, visits_all_servers_in_the_order_of_the_list)
{
    server_entry& low = add_server("a.example");
    server_entry& middle = add_server("b.example");
    server_entry& high = add_server("c.example");
    const server_end ends[] = {connect(low), connect(middle), connect(high)};
    const char* const names[] = {"a", "b", "c"};
    for (std::size_t index = 0; index < std::size(ends); ++index)
        ends[index].send({103, names[index]});
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"c", 2}, {"b", 2}, {"a", 2}}));
}

TEST_F(poll_cycle, is_quick_with_a_thousand_silent_servers)
{
    constexpr int many = 1000;
    constexpr std::chrono::milliseconds limit{5};
    if (!allow_open_files(2 * many + 64))
        GTEST_SKIP() << "no program here may open " << 2 * many << " files";
    std::vector<server_end> ends;
    ends.reserve(many);
    for (int index = 0; index < many; ++index)
        ends.push_back(connect(add_server(("host" + std::to_string(index)).c_str())));
    // The quickest of some cycles: the others include other work of the machine.
    auto quickest = std::chrono::nanoseconds::max();
    for (int cycle = 0; cycle < 20; ++cycle) {
        const auto begin = std::chrono::steady_clock::now();
        poll_all();
        quickest =
            std::min<std::chrono::nanoseconds>(quickest, std::chrono::steady_clock::now() - begin);
    }
    std::printf("a cycle over %d silent servers takes %.3f ms\n", many,
                std::chrono::duration<double, std::milli>(quickest).count());
    EXPECT_LT(quickest, limit);
    EXPECT_TRUE(said().empty());
}

TEST_F(poll_cycle, continues_after_a_server_that_closes)
{
    server_entry& low = add_server("a.example");
    server_entry& high = add_server("b.example");
    const server_end low_end = connect(low);
    const server_end high_end = connect(high);
    high_end.send({3, "bye"});
    low_end.send({103, "still here"});
    poll_all();
    EXPECT_EQ(said(), (status_lines{closed_line, {"still here", 2}}));
    EXPECT_EQ(high.socket_fd, 0);
    EXPECT_NE(low.socket_fd, 0);
}

TEST_F(poll_cycle, skips_a_server_whose_connect_is_pending)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    entry.connected = 0;
    entry.last_data_time = 0;
    server.send({103, "early"});
    poll_all();
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(server.take_bytes(), "");
    EXPECT_EQ(entry.bytes_received, 0U);
}

TEST_F(poll_cycle, skips_a_server_without_a_socket_although_it_was_connected_once)
{
    server_entry& entry = add_server("one.example");
    entry.connected = 1;
    entry.last_data_time = 1;
    poll_all();
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(entry.heartbeat_sent, 0);
    EXPECT_EQ(entry.last_data_time, 1);
}

TEST_F(poll_cycle, frees_a_packet_after_dispatch_and_is_ready_for_the_next)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    server.send({103, "text"});
    poll_all();
    EXPECT_EQ(entry.rx_packet, nullptr);
    EXPECT_EQ(entry.rx_received, 0U);
    EXPECT_EQ(entry.bytes_received, 16U);
}

TEST_F(poll_cycle, notes_the_time_of_every_whole_packet_of_any_kind)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    entry.last_data_time = 0;
    entry.heartbeat_sent = 1;
    const std::time_t before = std::time(nullptr);
    server.send({199, "x"});
    poll_all();
    EXPECT_GE(entry.last_data_time, before);
    EXPECT_LE(entry.last_data_time, std::time(nullptr));
    EXPECT_NE(entry.socket_fd, 0);
}

TEST_F(poll_cycle, does_not_count_half_a_packet_or_one_without_payload_as_data)
{
    server_entry& entry = add_server("one.example");
    const server_end server = connect(entry);
    const std::time_t noted = entry.last_data_time = std::time(nullptr) - 30;
    server.send({3, ""});
    poll_all();
    EXPECT_EQ(entry.rx_packet, nullptr);
    server.send_bytes(wire_bytes({103, "in two parts"}).substr(0, 15));
    poll_all();
    EXPECT_NE(entry.rx_packet, nullptr);
    EXPECT_EQ(entry.last_data_time, noted);
    EXPECT_NE(entry.socket_fd, 0);
    EXPECT_EQ(said(), status_lines{});
    server.send_bytes(wire_bytes({103, "in two parts"}).substr(15));
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"in two parts", 2}}));
}

TEST_F(poll_cycle, does_not_react_to_the_end_of_a_connection_alone)
{
    server_entry& entry = add_server("one.example");
    server_end server = connect(entry);
    server.close();
    poll_all();
    poll_all();
    EXPECT_EQ(said(), status_lines{});
    EXPECT_NE(entry.socket_fd, 0);
    EXPECT_EQ(entry.rx_packet, nullptr);
    entry.last_data_time = std::time(nullptr) - 1'000;
    poll_all();
    poll_all();
    EXPECT_EQ(said().back(), closed_line);
    EXPECT_EQ(entry.socket_fd, 0);
}

class idle : public poll_cycle
{
protected:
    idle() : entry(add_server("host.example", "srv")), server(connect(entry)) {}

    /// Runs one cycle in which the last data is exactly this many seconds old. Repeats it when the
    /// clock's second changed meanwhile.
    void poll_at_age(std::time_t age_s, std::uint8_t heartbeat_sent)
    {
        std::time_t now;
        do {
            if (entry.socket_fd > 0)
                close(entry.socket_fd);
            server = connect(entry);
            entry.heartbeat_sent = heartbeat_sent;
            mark();
            now = std::time(nullptr);
            entry.last_data_time = now - age_s;
            poll_all();
        } while (std::time(nullptr) != now);
    }

    server_entry& entry;
    server_end server;
    const status_line heartbeat_line = {"srv - no data since 10 minutes. Sending heartbeat", 7};
};

TEST_F(idle, is_quiet_for_ten_minutes)
{
    poll_at_age(600, 0);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(server.take_packets(), wire_packets{});
    EXPECT_EQ(entry.heartbeat_sent, 0);
}

TEST_F(idle, sends_one_heartbeat_after_ten_minutes)
{
    poll_at_age(601, 0);
    EXPECT_EQ(said(), (status_lines{heartbeat_line}));
    EXPECT_EQ(server.take_packets(), (wire_packets{heartbeat}));
    EXPECT_EQ(entry.heartbeat_sent, 1);
    poll_all();
    poll_all();
    EXPECT_EQ(said().size(), 1U);
    EXPECT_EQ(server.take_packets(), wire_packets{});
    EXPECT_NE(entry.socket_fd, 0);
}

TEST_F(idle, keeps_the_connection_for_fifteen_minutes)
{
    poll_at_age(900, 1);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(server.take_packets(), wire_packets{});
    EXPECT_NE(entry.socket_fd, 0);
    EXPECT_EQ(entry.heartbeat_sent, 1);
}

TEST_F(idle, closes_after_fifteen_minutes)
{
    poll_at_age(901, 1);
    EXPECT_EQ(said(), (status_lines{closed_line}));
    EXPECT_EQ(server.take_packets(), wire_packets{});
    EXPECT_TRUE(server.is_ended());
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.heartbeat_sent, 0);
    EXPECT_EQ(marker_of(entry), ' ');
}

TEST_F(idle, sends_the_heartbeat_first_however_long_the_silence_was)
{
    poll_at_age(5'000, 0);
    EXPECT_EQ(said(), (status_lines{heartbeat_line}));
    poll_all();
    EXPECT_EQ(said(), (status_lines{heartbeat_line, closed_line}));
    EXPECT_EQ(server.take_packets(), (wire_packets{heartbeat}));
    EXPECT_TRUE(server.is_ended());
}

TEST_F(idle, closes_a_second_silence_without_a_second_heartbeat)
{
    poll_at_age(601, 0);
    server.take_bytes();
    server.send({103, "awake"});
    poll_all();
    EXPECT_EQ(entry.heartbeat_sent, 1);
    entry.last_data_time = std::time(nullptr) - 700;
    poll_all();
    EXPECT_EQ(server.take_packets(), wire_packets{});
    EXPECT_NE(entry.socket_fd, 0);
    entry.last_data_time = std::time(nullptr) - 910;
    poll_all();
    EXPECT_EQ(said(), (status_lines{heartbeat_line, {"awake", 2}, closed_line}));
    EXPECT_EQ(server.take_packets(), wire_packets{});
}

TEST_F(idle, applies_in_the_cycle_that_brought_a_packet_too)
{
    // The packet's own time counts, so nothing is idle any more.
    entry.last_data_time = 0;
    server.send({103, "just in time"});
    poll_all();
    EXPECT_EQ(said(), (status_lines{{"just in time", 2}}));
    EXPECT_EQ(server.take_packets(), wire_packets{});
}

TEST_F(idle, counts_from_the_data_of_the_previous_connection)
{
    entry.last_data_time = std::time(nullptr) - 2'000;
    const std::time_t kept = entry.last_data_time;
    close_by_server(entry);
    EXPECT_EQ(entry.last_data_time, kept);
    server = connect(entry);
    entry.last_data_time = kept;
    mark();
    poll_all();
    EXPECT_EQ(server.take_packets(), (wire_packets{heartbeat}));
    poll_all();
    EXPECT_EQ(said(), (status_lines{heartbeat_line, closed_line}));
}

TEST_F(idle, treats_a_server_that_never_sent_anything_as_silent_at_once)
{
    entry.last_data_time = 0;
    poll_all();
    EXPECT_EQ(said(), (status_lines{heartbeat_line}));
    poll_all();
    EXPECT_EQ(said(), (status_lines{heartbeat_line, closed_line}));
}

TEST_F(idle, heartbeat_stays_noted_when_the_server_closes)
{
    entry.heartbeat_sent = 1;
    server.send({3, "bye"});
    poll_all();
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.heartbeat_sent, 1);
}

} // namespace
