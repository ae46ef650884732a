// inputs_fixture.hpp - a set of inputs with a loop around it, and senders of every kind.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/inputs/input_set.hpp"
#include "support/patience.hpp"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstdint>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

/// The loop of a server that has nothing but inputs.
class inputs_loop : public testing::Test
{
protected:
    inputs_loop() : epoll(epoll_create1(EPOLL_CLOEXEC)) {}

    /// Opens the set. The texts of what could not be opened.
    std::vector<std::string> open(const std::vector<tovrik::input_options>& options)
    {
        return input_set_open(
            set, epoll.get(), options, [this](const std::string& line) { lines.push_back(line); },
            tovrik::steady_clock::now());
    }

    /// One round of the loop, with a clock that is ahead of the real one.
    void turn()
    {
        epoll_event events[16];
        const int count = epoll_wait(epoll.get(), events, 16, 5);
        const auto now = tovrik::steady_clock::now() + ahead;
        for (int i = 0; i < count; ++i)
            append_messages(received, input_set_on_event(set, events[i].data.fd, now));
        append_messages(received, input_set_on_time(set, now));
        for (auto& notice : input_set_notices(set, now))
            notices.push_back(std::move(notice));
    }

    /// Turns until something is so. False if it takes too long.
    bool turn_until(const std::function<bool()>& is_so)
    {
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (!is_so()) {
            if (tovrik::steady_clock::now() > end)
                return false;
            turn();
        }
        return true;
    }

    bool turn_until_received(std::size_t count)
    {
        return turn_until([this, count] { return received.size() >= count; });
    }

    tovrik::input_counters counters(std::size_t index = 0)
    {
        return input_set_reports(set)[index].counters;
    }

    std::uint16_t port(std::size_t index = 0)
    {
        return input_set_reports(set)[index].port;
    }

    /// The texts of the messages so far.
    std::string texts() const
    {
        std::string all;
        for (const auto& message : received)
            all += message.content + " ";
        return all;
    }

    unique_fd epoll;
    tovrik::input_set set;
    std::vector<tovrik::transmission> received;
    std::vector<std::string> lines;
    std::vector<std::string> notices;
    tovrik::steady_clock::duration ahead{};
};

/// A line of JSON with a text.
inline std::string line_of(const std::string& text)
{
    return R"({"text":")" + text + "\"}\n";
}

inline sockaddr_in own_place(std::uint16_t port)
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return place;
}

inline void send_all(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        ASSERT_GT(count, 0);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// A socket that is connected to a port of this machine: of datagrams or a stream.
inline unique_fd connected_socket(std::uint16_t port, int type)
{
    unique_fd made{socket(AF_INET, type | SOCK_CLOEXEC, 0)};
    const auto place = own_place(port);
    EXPECT_EQ(connect(made.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    return made;
}

/// A socket that listens on a port of this machine; 0 is replaced by the one that was taken.
inline unique_fd listening_socket(std::uint16_t& port)
{
    unique_fd made{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const int on = 1;
    auto place = own_place(port);
    socklen_t size = sizeof place;
    EXPECT_EQ(setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on), 0);
    EXPECT_EQ(bind(made.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    EXPECT_EQ(listen(made.get(), 8), 0);
    EXPECT_EQ(getsockname(made.get(), reinterpret_cast<sockaddr*>(&place), &size), 0);
    port = ntohs(place.sin_port);
    return made;
}

constexpr std::uint32_t loopback_address = INADDR_LOOPBACK;
constexpr tovrik::address_range nobody_here = {0x0A000000, 0xFF000000}; // 10.0.0.0/8
constexpr tovrik::address_range this_machine = {0x7F000000, 0xFF000000};
