// crowd.cpp - see crowd.hpp.
#include "soak/crowd.hpp"

#include "soak/soak_traffic.hpp"
#include "support/loopback.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace
{

constexpr int max_wait_ms = 1;
constexpr int max_waiting_clients = 1024;
constexpr std::size_t introduction_bytes = 12 + 8 + 12 + 4; // the version and the format
constexpr std::int64_t us_per_second = 1'000'000;
constexpr std::uint32_t first_address = 0x7F010001; // 127.1.0.1

std::int64_t read_clock_us()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Which of the servers the client behind this socket has called.
std::size_t find_index(int fd)
{
    sockaddr_in place{};
    socklen_t length = sizeof place;
    getsockname(fd, reinterpret_cast<sockaddr*>(&place), &length);
    return ntohl(place.sin_addr.s_addr) - first_address;
}

std::string make_address(std::size_t index)
{
    const in_addr address{htonl(first_address + static_cast<std::uint32_t>(index))};
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

} // namespace

std::string crowd_alias(std::size_t index)
{
    return "c" + std::to_string(10'000 + index);
}

crowd::crowd(int count)
    : listener(bind_free_port("0.0.0.0")), members(static_cast<std::size_t>(count))
{
    listen(listener.get(), max_waiting_clients);
    fcntl(listener.get(), F_SETFL, O_NONBLOCK);
    thread = std::thread{[this] { run(); }};
}

crowd::~crowd()
{
    stops = true;
    thread.join();
}

std::vector<server_settings> crowd::settings() const
{
    std::vector<server_settings> all;
    for (std::size_t index = 0; index < members.size(); ++index)
        all.push_back({.name = make_address(index),
                       .port = std::to_string(port_of(listener.get())),
                       .alias = crowd_alias(index)});
    std::ranges::sort(all, std::ranges::greater{}, &server_settings::name);
    return all;
}

std::vector<std::int64_t> crowd::transmissions() const
{
    const std::lock_guard lock{guard};
    std::vector<std::int64_t> all;
    for (const member& one : members)
        all.push_back(one.transmissions);
    return all;
}

void crowd::run()
{
    while (!stops) {
        std::vector<pollfd> watched{{listener.get(), POLLIN, 0}};
        for (const member& one : members)
            watched.push_back({one.client.get(), POLLIN, 0});
        poll(watched.data(), watched.size(), max_wait_ms);
        if (watched[0].revents != 0)
            accept_all();
        for (std::size_t index = 0; index < members.size(); ++index)
            if (watched[index + 1].revents != 0)
                take_in(members[index]);
        send_due();
    }
}

void crowd::accept_all()
{
    for (;;) {
        unique_fd client{accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!client)
            return;
        const std::size_t index = find_index(client.get());
        if (index >= members.size())
            continue;
        const std::string greeting = packet_bytes(greeting_packet(static_cast<int>(index), false));
        send(client.get(), greeting.data(), greeting.size(), MSG_NOSIGNAL);
        members[index].client = std::move(client);
    }
}

void crowd::take_in(member& one)
{
    std::array<char, 4096> bytes{};
    const ssize_t length = recv(one.client.get(), bytes.data(), bytes.size(), 0);
    if (length < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (length <= 0) {
        one.client = unique_fd{};
        return;
    }
    one.received.append(bytes.data(), static_cast<std::size_t>(length));
    if (!one.is_introduced && one.received.size() >= introduction_bytes) {
        one.is_introduced = true;
        ++introductions;
    }
}

/// One server after the other, so that each has its turn once a second.
void crowd::send_due()
{
    // Taken first: whoever has stopped the talk and counts then must find nothing under way.
    const std::lock_guard lock{guard};
    const std::int64_t now = read_clock_us();
    if (!is_talking) {
        next_due_us = now;
        return;
    }
    for (; next_due_us <= now;
         next_due_us += us_per_second / static_cast<std::int64_t>(members.size())) {
        member& one = members[next_speaker];
        const std::string bytes = packet_bytes(
            transmission_packet(static_cast<int>(next_speaker % 1000), one.transmissions));
        if (one.client && send(one.client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                              static_cast<ssize_t>(bytes.size()))
            ++one.transmissions;
        next_speaker = (next_speaker + 1) % members.size();
    }
}
