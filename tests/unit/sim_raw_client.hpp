// sim_raw_client.hpp - a client of the practice server that is nothing but a socket.
//
// Reads as fast as packets come and builds its bytes by hand, so that it can also misbehave.
#pragma once

#include "server/practice/practice_server.hpp"
#include "support/loopback.hpp"
#include "support/patience.hpp"
#include "support/server_packet.hpp"

#include <cerrno>
#include <cstdint>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

class sim_raw_client
{
public:
    explicit sim_raw_client(std::uint16_t port, const std::string& address = "127.0.0.1")
        : fd(begin_connect(address, port))
    {
    }
    sim_raw_client(sim_raw_client&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    sim_raw_client(const sim_raw_client&) = delete;
    sim_raw_client& operator=(const sim_raw_client&) = delete;
    ~sim_raw_client()
    {
        hang_up();
    }

    void hang_up()
    {
        if (fd >= 0)
            close(std::exchange(fd, -1));
    }

    /// False when not all bytes could be handed over.
    bool send_bytes(const std::string& bytes)
    {
        std::size_t sent = 0;
        while (sent < bytes.size() && wait_for_socket(fd, POLLOUT, default_patience)) {
            const ssize_t count =
                send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && errno != EAGAIN && errno != EINTR)
                return false;
            sent += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        return sent == bytes.size();
    }

    bool send_text(std::uint32_t kind, const std::string& text)
    {
        return send_bytes(packet_bytes({.kind = kind, .payload = text}));
    }

    /// The next packet; nothing at the end of the stream or when it does not come.
    std::optional<server_packet> receive()
    {
        std::size_t length = 0;
        const auto header = read_bytes(wire_header_bytes);
        if (!header)
            return std::nullopt;
        server_packet received = parse_header(*header, length);
        const auto payload = read_bytes(length);
        if (!payload)
            return std::nullopt;
        received.payload = *payload;
        return received;
    }

    /// Skips packets of other kinds.
    std::optional<server_packet> receive_kind(std::uint32_t kind)
    {
        auto received = receive();
        while (received && received->kind != kind)
            received = receive();
        return received;
    }

    /// Reads on and returns true at the end of the stream, false if it does not come.
    bool ends()
    {
        char block[4096];
        while (wait_for_socket(fd, POLLIN, default_patience)) {
            const ssize_t count = recv(fd, block, sizeof block, 0);
            if (count == 0 || (count < 0 && errno == ECONNRESET))
                return true;
            if (count < 0 && errno != EINTR && errno != EAGAIN)
                return false;
        }
        return false;
    }

    /// Everything up to the end of the stream. Nothing if that does not come.
    std::optional<std::string> receive_all()
    {
        std::string text;
        char block[65536];
        while (wait_for_socket(fd, POLLIN, default_patience)) {
            const ssize_t count = recv(fd, block, sizeof block, 0);
            if (count == 0)
                return text;
            if (count > 0)
                text.append(block, static_cast<std::size_t>(count));
            else if (errno != EINTR && errno != EAGAIN)
                return std::nullopt;
        }
        return std::nullopt;
    }

    int fd;

private:
    std::optional<std::string> read_bytes(std::size_t count)
    {
        std::string bytes(count, '\0');
        std::size_t have = 0;
        while (have < count) {
            if (!wait_for_socket(fd, POLLIN, default_patience))
                return std::nullopt;
            const ssize_t got = recv(fd, bytes.data() + have, count - have, 0);
            if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN))
                return std::nullopt;
            have += got > 0 ? static_cast<std::size_t>(got) : 0;
        }
        return bytes;
    }
};

/// The kinds of the next `count` packets.
inline std::vector<std::uint32_t> next_kinds(sim_raw_client& client, std::size_t count)
{
    std::vector<std::uint32_t> kinds;
    while (kinds.size() < count) {
        const auto received = client.receive();
        if (!received)
            break;
        kinds.push_back(received->kind);
    }
    return kinds;
}

/// Options of a server that does not hold its packets back.
inline tovrik::server_options quick_server()
{
    tovrik::server_options options;
    options.pace_ms = 0;
    return options;
}
