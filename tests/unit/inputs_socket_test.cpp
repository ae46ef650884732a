// inputs_socket_test.cpp - datagrams, senders that connect, and receivers to connect to.
#include "inputs_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/input_limits.hpp"

#include <thread>

namespace
{

using tovrik::input_options;
using tovrik::input_type;

class inputs_udp : public inputs_loop
{
};

TEST_F(inputs_udp, takes_datagrams_of_any_kind)
{
    ASSERT_TRUE(open({{.type = input_type::udp, .name = "roof"}}).empty());
    const unique_fd sender = connected_socket(port(), SOCK_DGRAM);
    send_all(sender.get(), line_of("a") + "broken\n\n" + R"({"text":"b"})");
    EXPECT_EQ(send(sender.get(), "", 0, 0), 0);
    send_all(sender.get(), std::string(60000, '{'));
    send_all(sender.get(), line_of("c"));
    ASSERT_TRUE(turn_until_received(3));
    EXPECT_EQ(texts(), "a b c ");
    const auto counted = counters();
    EXPECT_EQ(counted.messages, 3U);
    EXPECT_EQ(counted.broken, 2U);
    EXPECT_GT(counted.bytes, 60000U);
    EXPECT_TRUE(counted.is_connected);
    EXPECT_GT(counted.last_message, 0);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "input 'roof': dropped a line of JSON (number 1 so far): this is not JSON");
}

TEST_F(inputs_udp, takes_a_burst_whole)
{
    ASSERT_TRUE(open({{.type = input_type::udp, .name = "roof"}}).empty());
    constexpr std::size_t count = 10000;
    const std::string text(300, 'x');
    const auto send_burst = [this, &text] {
        const unique_fd sender = connected_socket(port(), SOCK_DGRAM);
        for (std::size_t i = 0; i < count; ++i)
            send_all(sender.get(), line_of(text + std::to_string(i)));
    };
    send_burst(); // nothing is taken meanwhile
    turn();
    send_burst(); // carries the system's count of what it dropped
    const unique_fd sender = connected_socket(port(), SOCK_DGRAM);
    ASSERT_TRUE(turn_until([this, &sender] {
        send_all(sender.get(), line_of("end"));
        return counters().messages + counters().lost > 2 * count;
    }));
    int size = 0;
    socklen_t length = sizeof size;
    const unique_fd other{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    const bool has_right =
        setsockopt(other.get(), SOL_SOCKET, SO_RCVBUFFORCE, &tovrik::udp_receive_buffer_bytes,
                   sizeof tovrik::udp_receive_buffer_bytes) == 0 &&
        getsockopt(other.get(), SOL_SOCKET, SO_RCVBUF, &size, &length) == 0;
    if (has_right) {
        EXPECT_EQ(counters().lost, 0U);
    }
    EXPECT_GE(received.size() + counters().lost, 2 * count);
}

TEST_F(inputs_udp, counts_what_the_system_drops)
{
    ASSERT_TRUE(open({{.type = input_type::udp, .name = "roof"}}).empty());
    const unique_fd sender = connected_socket(port(), SOCK_DGRAM);
    constexpr std::size_t count = 2000; // far beyond any buffer
    for (std::size_t i = 0; i < count; ++i)
        send_all(sender.get(), std::string(60000, ' ') + line_of("x"));
    std::size_t sent = count;
    ASSERT_TRUE(turn_until([this, &sender, &sent] {
        send_all(sender.get(), line_of("end"));
        ++sent;
        return counters().lost > 0;
    }));
    ASSERT_TRUE(
        turn_until([this, &sent] { return counters().messages + counters().lost >= sent; }));
}

TEST_F(inputs_udp, refuses_senders_that_are_not_allowed)
{
    ASSERT_TRUE(open({{.type = input_type::udp, .name = "a", .allow = {nobody_here}},
                      {.type = input_type::udp, .name = "b", .allow = {nobody_here, this_machine}}})
                    .empty());
    send_all(connected_socket(port(0), SOCK_DGRAM).get(), line_of("no"));
    send_all(connected_socket(port(1), SOCK_DGRAM).get(), line_of("yes"));
    ASSERT_TRUE(turn_until([this] { return counters(0).refused == 1 && received.size() == 1; }));
    EXPECT_EQ(texts(), "yes ");
    EXPECT_EQ(counters(0).bytes, 0U);
}

TEST_F(inputs_udp, leaves_empty_squitters_out_by_option)
{
    ASSERT_TRUE(
        open({{.type = input_type::udp, .name = "a", .drop_empty_squitters = true}}).empty());
    send_all(connected_socket(port(), SOCK_DGRAM).get(),
             "{\"label\":\"SQ\",\"block_id\":\"A\"}\n" + line_of("x"));
    ASSERT_TRUE(turn_until_received(1));
    EXPECT_EQ(texts(), "x ");
    EXPECT_EQ(counters().left_out, 1U);
    EXPECT_EQ(counters().messages, 2U);
}

class inputs_tcp_listen : public inputs_loop
{
};

TEST_F(inputs_tcp_listen, hears_several_senders_line_by_line)
{
    ASSERT_TRUE(open({{.type = input_type::tcp_listen, .name = "roof"}}).empty());
    const unique_fd one = connected_socket(port(), SOCK_STREAM);
    unique_fd two = connected_socket(port(), SOCK_STREAM);
    send_all(one.get(), R"({"text":)");
    send_all(two.get(), line_of("b") + R"({"text":"c"})");
    ASSERT_TRUE(turn_until_received(1));
    send_all(one.get(), "\"a\"}\n");
    ASSERT_TRUE(turn_until_received(2));
    EXPECT_EQ(texts(), "b a ");
    two = unique_fd{};
    ASSERT_TRUE(turn_until_received(3)) << "the end of a stream ends its last line";
    send_all(one.get(), line_of("d"));
    ASSERT_TRUE(turn_until_received(4));
    EXPECT_EQ(texts(), "b a c d ");
}

TEST_F(inputs_tcp_listen, has_a_bound_of_senders_and_takes_others_when_some_have_gone)
{
    ASSERT_TRUE(open({{.type = input_type::tcp_listen, .name = "roof"}}).empty());
    std::vector<unique_fd> senders;
    for (std::size_t i = 0; i < tovrik::max_senders; ++i) {
        senders.push_back(connected_socket(port(), SOCK_STREAM));
        send_all(senders.back().get(), line_of("x"));
    }
    ASSERT_TRUE(turn_until_received(tovrik::max_senders));
    const unique_fd one_more = connected_socket(port(), SOCK_STREAM);
    ASSERT_TRUE(turn_until([this] { return counters().refused == 1; }));
    senders.pop_back();
    ASSERT_TRUE(turn_until([this, &senders] {
        senders.push_back(connected_socket(port(), SOCK_STREAM));
        send(senders.back().get(), "{\"text\":\"y\"}\n", 13, MSG_NOSIGNAL);
        turn();
        return received.size() > tovrik::max_senders;
    }));
}

TEST_F(inputs_tcp_listen, refuses_senders_that_are_not_allowed)
{
    ASSERT_TRUE(
        open({{.type = input_type::tcp_listen, .name = "roof", .allow = {nobody_here}}}).empty());
    const unique_fd sender = connected_socket(port(), SOCK_STREAM);
    ASSERT_TRUE(turn_until([this] { return counters().refused == 1; }));
    char byte = 0;
    EXPECT_LE(recv(sender.get(), &byte, 1, 0), 0) << "it is closed";
}

class inputs_tcp_connect : public inputs_loop
{
protected:
    /// Accepts the input's connection.
    unique_fd accept_input(const unique_fd& listener)
    {
        unique_fd accepted;
        EXPECT_TRUE(turn_until([&] {
            accepted = unique_fd{accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)};
            return static_cast<bool>(accepted);
        }));
        return accepted;
    }

    static unique_fd listen_without_waiting(std::uint16_t& port)
    {
        unique_fd listener = listening_socket(port);
        const timeval wait{0, 1000};
        setsockopt(listener.get(), SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
        return listener;
    }
};

TEST_F(inputs_tcp_connect, connects_by_name_and_again_after_an_end)
{
    std::uint16_t place = 0;
    const unique_fd listener = listen_without_waiting(place);
    ASSERT_TRUE(
        open({{.type = input_type::tcp_connect, .name = "far", .host = "localhost", .port = place}})
            .empty());
    unique_fd server = accept_input(listener);
    send_all(server.get(), line_of("a") + R"({"text":"b"})");
    ASSERT_TRUE(turn_until_received(1));
    EXPECT_TRUE(counters().is_connected);
    EXPECT_EQ(counters().reconnections, 0U);
    server = unique_fd{};
    ASSERT_TRUE(turn_until_received(2));
    EXPECT_FALSE(counters().is_connected);
    EXPECT_EQ(lines,
              std::vector<std::string>{"input 'far': the connection was closed; trying again"});
    ahead += tovrik::first_retry_pause;
    server = accept_input(listener);
    send_all(server.get(), line_of("c"));
    ASSERT_TRUE(turn_until_received(3));
    EXPECT_EQ(texts(), "a b c ");
    EXPECT_EQ(counters().reconnections, 1U);
    EXPECT_EQ(lines.back(), "input 'far': connected");
}

TEST_F(inputs_tcp_connect, waits_longer_after_each_connection_that_gave_nothing)
{
    std::uint16_t place = 0;
    const unique_fd listener = listen_without_waiting(place);
    ASSERT_TRUE(
        open({{.type = input_type::tcp_connect, .name = "far", .host = "127.0.0.1", .port = place}})
            .empty());
    std::size_t connections = 0;
    for (const int pause_s : {1, 2, 4, 8, 16, 32, 60, 60}) {
        unique_fd server = accept_input(listener);
        ASSERT_TRUE(turn_until([this] { return counters().is_connected; }));
        EXPECT_EQ(counters().reconnections, connections++);
        const auto before = tovrik::steady_clock::now() + ahead;
        server = unique_fd{};
        ASSERT_TRUE(turn_until([this] { return !counters().is_connected; }));
        const auto pause = set.entries[0].source->next_time() - before;
        EXPECT_GE(pause, std::chrono::seconds{pause_s});
        EXPECT_LE(pause,
                  std::chrono::seconds{pause_s} + (tovrik::steady_clock::now() + ahead - before));
        ahead += std::chrono::seconds{pause_s};
    }
    const unique_fd server = accept_input(listener);
    send_all(server.get(), line_of("a"));
    ASSERT_TRUE(turn_until_received(1));
    const auto before = tovrik::steady_clock::now() + ahead;
    shutdown(server.get(), SHUT_RDWR);
    ASSERT_TRUE(turn_until([this] { return !counters().is_connected; }));
    EXPECT_LE(set.entries[0].source->next_time() - before,
              tovrik::first_retry_pause + (tovrik::steady_clock::now() + ahead - before))
        << "the pauses begin anew";
}

TEST_F(inputs_tcp_connect, tells_the_first_of_several_failures)
{
    std::uint16_t place = 0;
    listen_without_waiting(place); // and nobody listens any more
    ASSERT_TRUE(
        open({{.type = input_type::tcp_connect, .name = "far", .host = "127.0.0.1", .port = place}})
            .empty());
    ASSERT_TRUE(turn_until([this] { return !lines.empty(); }));
    for (int i = 0; i < 20; ++i) {
        ahead += tovrik::longest_retry_pause;
        turn();
    }
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], "input 'far': cannot connect: Connection refused; trying again");
    EXPECT_EQ(counters().reconnections, 0U);
}

TEST_F(inputs_tcp_connect, gives_a_server_up_that_does_not_answer)
{
    std::uint16_t place = 0;
    const unique_fd listener = listening_socket(place);
    ASSERT_EQ(listen(listener.get(), 0), 0);
    std::vector<unique_fd> crowd; // fills the queue of a listener that accepts nobody
    for (int i = 0; i < 4; ++i) {
        crowd.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const auto to = own_place(place);
        connect(crowd.back().get(), reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
    ASSERT_TRUE(
        open({{.type = input_type::tcp_connect, .name = "far", .host = "127.0.0.1", .port = place}})
            .empty());
    ASSERT_TRUE(turn_until([this] { return set.entries[0].source->next_time() != tovrik::never; }));
    ahead += tovrik::connect_patience + std::chrono::seconds{1};
    ASSERT_TRUE(turn_until([this] { return !lines.empty(); }));
    EXPECT_EQ(lines[0], "input 'far': cannot connect: Connection timed out; trying again");
}

TEST_F(inputs_tcp_connect, does_not_wait_for_a_name)
{
    ASSERT_TRUE(open({{.type = input_type::tcp_connect,
                       .name = "far",
                       .host = "nowhere.invalid",
                       .port = 1}})
                    .empty());
    ASSERT_TRUE(turn_until([this] { return !lines.empty(); }));
    EXPECT_TRUE(lines[0].starts_with("input 'far': nowhere.invalid: ")) << lines[0];
}

} // namespace
