// inputs_set_test.cpp - pipes, all inputs together, their change, their silence and their bounds.
#include "inputs_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/block_queue.hpp"
#include "server/inputs/input_limits.hpp"
#include "server/inputs/retry_pause.hpp"
#include "support/temp_home.hpp"

#include <fcntl.h>
#include <sys/stat.h>

namespace
{

using std::chrono::minutes;
using tovrik::input_options;
using tovrik::input_type;

class inputs_pipe : public inputs_loop
{
protected:
    inputs_pipe() : path(home.path_of("pipe"))
    {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    }

    unique_fd open_writer() const
    {
        return unique_fd{::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)};
    }

    temp_home home;
    std::string path;
};

TEST_F(inputs_pipe, outlives_its_writers)
{
    ASSERT_TRUE(open({{.type = input_type::pipe, .name = "p", .path = path}}).empty());
    for (const char* text : {"a", "b", "c"}) {
        const std::size_t before = received.size();
        {
            const unique_fd writer = open_writer();
            ASSERT_TRUE(writer);
            send_all(writer.get(), line_of(text) + R"({"text":"rest"})");
            ASSERT_TRUE(turn_until_received(before + 1));
        }
        ASSERT_TRUE(turn_until_received(before + 2));
        EXPECT_EQ(lines.size(), received.size() / 2);
        EXPECT_EQ(lines.back(), "input 'p': the stream has ended");
        EXPECT_TRUE(counters().is_connected);
    }
    EXPECT_EQ(texts(), "a rest b rest c rest ");
}

TEST_F(inputs_pipe, loses_nothing_of_quick_writers_and_does_not_spin_afterwards)
{
    ASSERT_TRUE(open({{.type = input_type::pipe, .name = "p", .path = path}}).empty());
    for (int i = 0; i < 100; ++i)
        send_all(open_writer().get(), line_of("x"));
    ASSERT_TRUE(turn_until_received(100));
    epoll_event event{};
    ASSERT_TRUE(turn_until([&] { return epoll_wait(epoll.get(), &event, 1, 0) == 0; }));
    send_all(open_writer().get(), line_of("y"));
    ASSERT_TRUE(turn_until_received(101));
}

TEST_F(inputs_pipe, is_told_of_when_it_is_missing_and_opened_when_it_is_there)
{
    ASSERT_EQ(unlink(path.c_str()), 0);
    const auto errors = open({{.type = input_type::pipe, .name = "p", .path = path},
                              {.type = input_type::udp, .name = "u"}});
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0], "input 'p': " + path + ": No such file or directory");
    send_all(connected_socket(port(1), SOCK_DGRAM).get(), line_of("u"));
    ASSERT_TRUE(turn_until_received(1)) << "the other one works";
    EXPECT_FALSE(counters(0).is_connected);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ahead += tovrik::longest_retry_pause;
    ASSERT_TRUE(turn_until([this] { return counters(0).is_connected; }));
    send_all(open_writer().get(), line_of("p"));
    ASSERT_TRUE(turn_until_received(2));
    EXPECT_EQ(lines.front(), "input 'p': open");
}

TEST_F(inputs_pipe, refuses_files_of_other_kinds)
{
    home.write_file("file", "x");
    const auto errors =
        open({{.type = input_type::pipe, .name = "p", .path = home.path_of("file")}});
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0], "input 'p': " + home.path_of("file") + ": not a named pipe");
}

/// Standard input is a pipe meanwhile.
class own_standard_input
{
public:
    own_standard_input() : former(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0))
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        writer = unique_fd{ends[1]};
        const unique_fd reader{ends[0]};
        dup2(reader.get(), STDIN_FILENO);
    }
    own_standard_input(const own_standard_input&) = delete;
    own_standard_input& operator=(const own_standard_input&) = delete;
    ~own_standard_input()
    {
        dup2(former.get(), STDIN_FILENO);
    }
    unique_fd writer;

private:
    unique_fd former;
};

class inputs_standard : public inputs_loop
{
};

TEST_F(inputs_standard, ends_for_good_and_says_so)
{
    own_standard_input own;
    ASSERT_TRUE(open({{.type = input_type::pipe, .name = "in", .path = "-"}}).empty());
    send_all(own.writer.get(), line_of("a") + R"({"text":"b"})");
    ASSERT_TRUE(turn_until_received(1));
    own.writer = unique_fd{};
    ASSERT_TRUE(turn_until_received(2));
    EXPECT_EQ(lines, std::vector<std::string>{"input 'in': the stream has ended"});
    EXPECT_FALSE(counters().is_connected);
    ahead += tovrik::longest_retry_pause;
    turn();
    turn();
    EXPECT_EQ(lines.size(), 1U);
}

class inputs_set : public inputs_loop
{
};

TEST_F(inputs_set, tells_of_a_port_that_is_taken_and_opens_it_when_it_is_free)
{
    std::uint16_t place = 0;
    unique_fd taken = listening_socket(place);
    const auto errors = open({{.type = input_type::tcp_listen, .name = "t", .port = place},
                              {.type = input_type::udp, .name = "u", .bind = "localhost"}});
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_EQ(errors[0], "input 't': cannot listen on 127.0.0.1:" + std::to_string(place) +
                             ": Address already in use");
    EXPECT_EQ(errors[1], "input 'u': localhost: not an IPv4 address");
    taken = unique_fd{};
    ahead += tovrik::longest_retry_pause;
    ASSERT_TRUE(turn_until([this] { return counters(0).is_connected; }));
    send_all(connected_socket(place, SOCK_STREAM).get(), line_of("x"));
    ASSERT_TRUE(turn_until_received(1));
}

TEST_F(inputs_set, changes_only_what_has_changed)
{
    const input_options kept{.type = input_type::tcp_listen, .name = "kept"};
    input_options changed{.type = input_type::tcp_listen, .name = "changed"};
    ASSERT_TRUE(open({kept, changed}).empty());
    const unique_fd to_kept = connected_socket(port(0), SOCK_STREAM);
    const unique_fd to_changed = connected_socket(port(1), SOCK_STREAM);
    send_all(to_kept.get(), R"({"text":)");
    send_all(to_changed.get(), line_of("b"));
    ASSERT_TRUE(turn_until_received(1));
    const std::uint16_t former_port = port(1);
    changed.allow = {this_machine};
    changed.port = former_port;
    const input_options added{.type = input_type::udp, .name = "added"};
    EXPECT_TRUE(input_set_change(set, {added, changed, kept}, tovrik::steady_clock::now()).empty());
    const auto reports = input_set_reports(set);
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].name + reports[0].type, "addedudp");
    EXPECT_EQ(reports[1].port, former_port) << "closed before it was opened";
    EXPECT_EQ(reports[1].counters.messages, 0U);
    EXPECT_EQ(reports[2].name + reports[2].type, "kepttcp-listen");
    char byte = 0;
    EXPECT_LE(recv(to_changed.get(), &byte, 1, 0), 0) << "its senders are gone";
    send_all(to_kept.get(), "\"a\"}\n");
    send_all(connected_socket(port(0), SOCK_DGRAM).get(), line_of("c"));
    ASSERT_TRUE(turn_until_received(3));
    EXPECT_TRUE(input_set_change(set, {}, tovrik::steady_clock::now()).empty());
    EXPECT_TRUE(set.host.owners.empty());
    EXPECT_EQ(input_set_next_time(set), tovrik::never);
}

TEST_F(inputs_set, keeps_two_equal_inputs_apart)
{
    const input_options twin{.type = input_type::udp, .name = "twin"};
    ASSERT_TRUE(open({twin, twin}).empty());
    EXPECT_NE(port(0), port(1));
    const std::uint16_t first = port(0);
    EXPECT_TRUE(input_set_change(set, {twin}, tovrik::steady_clock::now()).empty());
    EXPECT_EQ(port(0), first);
}

TEST_F(inputs_set, lets_foreign_descriptors_alone)
{
    ASSERT_TRUE(open({{.type = input_type::udp, .name = "u"}}).empty());
    EXPECT_FALSE(input_set_owns(set, epoll.get()));
    EXPECT_TRUE(input_set_on_event(set, epoll.get(), tovrik::steady_clock::now()).empty());
    EXPECT_EQ(set.host.owners.size(), 1U);
    EXPECT_TRUE(input_set_owns(set, set.host.owners.begin()->first));
}

TEST_F(inputs_set, tells_of_silence_once_and_of_its_end_once)
{
    ASSERT_TRUE(
        open({{.type = input_type::udp, .name = "roof"}, {.type = input_type::udp, .name = "hill"}})
            .empty());
    send_all(connected_socket(port(0), SOCK_DGRAM).get(), line_of("x"));
    ASSERT_TRUE(turn_until_received(1));
    EXPECT_TRUE(notices.empty());
    const std::time_t heard = counters(0).last_message;
    char minute[8];
    std::strftime(minute, sizeof minute, "%H:%M", std::gmtime(&heard));
    EXPECT_LE(input_set_next_time(set), tovrik::steady_clock::now() + minutes{15});
    ahead += minutes{16};
    for (int i = 0; i < 3; ++i)
        turn();
    EXPECT_EQ(notices, (std::vector<std::string>{
                           std::string{"No messages from receiver 'roof' since "} + minute,
                           "No messages from receiver 'hill' since the start"}));
    EXPECT_TRUE(input_set_reports(set)[0].is_silent);
    EXPECT_EQ(input_set_next_time(set), tovrik::never);
    notices.clear();
    send_all(connected_socket(port(0), SOCK_DGRAM).get(), "broken\n" + line_of("y"));
    ASSERT_TRUE(turn_until_received(2));
    turn();
    EXPECT_EQ(notices, std::vector<std::string>{"Messages from receiver 'roof' again"});
    EXPECT_FALSE(input_set_reports(set)[0].is_silent);
}

TEST_F(inputs_set, limits_what_it_tells_of_broken_lines_over_all_senders)
{
    ASSERT_TRUE(open({{.type = input_type::tcp_listen, .name = "t"}}).empty());
    const auto begin = tovrik::steady_clock::now();
    std::vector<unique_fd> senders;
    for (int i = 0; i < 20; ++i) {
        senders.push_back(connected_socket(port(), SOCK_STREAM));
        for (int line = 0; line < 50; ++line)
            send_all(senders.back().get(), "broken\n");
    }
    ASSERT_TRUE(turn_until([this] { return counters().broken == 1000; }));
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(tovrik::steady_clock::now() - begin);
    EXPECT_LE(lines.size(), static_cast<std::size_t>(tovrik::max_complaints_per_second) *
                                static_cast<std::size_t>(seconds.count() + 2));
    EXPECT_GT(lines.size(), 1U);
}

TEST(inputs_bounds, make_pauses_grow_to_the_longest)
{
    tovrik::retry_pause pause;
    for (const int seconds : {1, 2, 4, 8, 16, 32, 60, 60, 60})
        EXPECT_EQ(retry_take_pause(pause), std::chrono::seconds{seconds});
}

TEST(inputs_bounds, make_a_queue_full)
{
    tovrik::block_queue queue;
    for (std::size_t i = 0; i < tovrik::max_waiting_blocks; ++i) {
        ASSERT_FALSE(queue_is_full(queue, 1));
        queue_push(queue, "x");
    }
    EXPECT_TRUE(queue_is_full(queue, 0));
    EXPECT_EQ(queue_pop(queue), "x");
    EXPECT_FALSE(queue_is_full(queue, 1));
    EXPECT_TRUE(queue_is_full(queue, tovrik::max_waiting_bytes));
    EXPECT_EQ(queue.bytes, tovrik::max_waiting_blocks - 1);
}

TEST(inputs_bounds, say_since_when_a_receiver_is_silent)
{
    tovrik::input_silence silence;
    const tovrik::time_point start{};
    EXPECT_EQ(
        silence_notice(silence, "roof", 1767609300, start + minutes{15} - std::chrono::seconds{1}),
        "");
    EXPECT_EQ(silence_notice(silence, "roof", 1767609300, start + minutes{15}),
              "No messages from receiver 'roof' since 10:35");
    EXPECT_EQ(silence_notice(silence, "roof", 1767609300, start + minutes{60}), "");
    silence.since = start + minutes{60};
    EXPECT_EQ(silence_notice(silence, "roof", 1767612900, start + minutes{60}),
              "Messages from receiver 'roof' again");
    EXPECT_EQ(silence_notice(silence, "roof", 1767612900, start + minutes{61}), "");
}

} // namespace
