// client_crowd.hpp - many clients that are nothing but sockets, all read by one loop.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "support/loopback.hpp"
#include "support/patience.hpp"
#include "support/server_packet.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <vector>

/// One client. It takes everything in as soon as it comes.
struct crowd_client {
    unique_fd socket;
    std::size_t server = 0;                ///< which one it is connected to
    std::string input = {};                ///< received, and no whole packet yet
    std::vector<server_packet> taken = {}; ///< in the order in which they came
    bool has_ended = false;                ///< the connection is over

    std::size_t count_kind(std::uint32_t kind) const
    {
        std::size_t count = 0;
        for (const server_packet& each : taken)
            count += each.kind == kind ? 1 : 0;
        return count;
    }
};

class client_crowd
{
public:
    /// Connects clients to a port. `server` is what they call it.
    void connect(std::uint16_t port, std::size_t server, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
            clients.push_back(
                {.socket = unique_fd{begin_connect("127.0.0.1", port)}, .server = server});
    }

    /// Reads what has come, or comes within `wait_ms`.
    void take_in(int wait_ms)
    {
        std::vector<pollfd> watched(clients.size());
        for (std::size_t i = 0; i < clients.size(); ++i)
            watched[i] = {clients[i].has_ended ? -1 : clients[i].socket.get(), POLLIN, 0};
        if (poll(watched.data(), watched.size(), wait_ms) <= 0)
            return;
        for (std::size_t i = 0; i < clients.size(); ++i) {
            if (watched[i].revents != 0)
                receive(clients[i]);
        }
    }

    /// Reads until a condition holds. False if it takes too long.
    bool take_in_until(const std::function<bool()>& is_met)
    {
        constexpr int short_wait_ms = 100;
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (!is_met()) {
            if (tovrik::steady_clock::now() > end)
                return false;
            take_in(short_wait_ms);
        }
        return true;
    }

    std::vector<crowd_client> clients;

private:
    static void receive(crowd_client& client)
    {
        std::array<char, 65536> block;
        const ssize_t count = recv(client.socket.get(), block.data(), block.size(), MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count <= 0) {
            client.has_ended = true;
            return;
        }
        client.input.append(block.data(), static_cast<std::size_t>(count));
        take_packets(client);
    }

    static void take_packets(crowd_client& client)
    {
        std::size_t length = 0;
        while (client.input.size() >= wire_header_bytes) {
            server_packet next = parse_header(client.input, length);
            if (client.input.size() < wire_header_bytes + length)
                return;
            next.payload = client.input.substr(wire_header_bytes, length);
            client.input.erase(0, wire_header_bytes + length);
            client.taken.push_back(std::move(next));
        }
    }
};
