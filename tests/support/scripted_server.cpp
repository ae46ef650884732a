// scripted_server.cpp - a server of which a test decides every byte and every silence.
#include "support/scripted_server.hpp"

#include "support/loopback.hpp"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int max_waiting_clients = 128;
constexpr int max_queue_fillers = 16;
constexpr std::chrono::milliseconds local_connect_time{500};

} // namespace

server_connection::server_connection(int socket_fd) : fd(socket_fd) {}

server_connection::server_connection(server_connection&& other) noexcept
    : fd(std::exchange(other.fd, -1)), all(std::move(other.all)), taken(other.taken),
      ended(other.ended)
{
}

server_connection& server_connection::operator=(server_connection&& other) noexcept
{
    std::swap(fd, other.fd);
    std::swap(all, other.all);
    std::swap(taken, other.taken);
    std::swap(ended, other.ended);
    return *this;
}

server_connection::~server_connection()
{
    close();
}

bool server_connection::send_bytes(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (fd < 0 || !wait_for_socket(fd, POLLOUT, default_patience))
            return false;
        const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool server_connection::send(const server_packet& packet)
{
    return send_bytes(packet_bytes(packet));
}

bool server_connection::send(std::uint32_t kind, std::string_view text)
{
    return send(server_packet{.kind = kind, .payload = std::string{text}});
}

bool server_connection::take_in(std::chrono::milliseconds limit)
{
    if (fd < 0 || ended || !wait_for_socket(fd, POLLIN, limit))
        return false;
    char bytes[16384];
    const ssize_t length = ::recv(fd, bytes, sizeof bytes, MSG_DONTWAIT);
    if (length <= 0) {
        ended = length == 0 || (errno != EAGAIN && errno != EINTR);
        return !ended;
    }
    all.append(bytes, static_cast<std::size_t>(length));
    return true;
}

std::optional<std::string> server_connection::read_bytes(std::size_t count,
                                                         std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (all.size() - taken < count) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (!take_in(left))
            return std::nullopt;
    }
    std::string bytes = all.substr(taken, count);
    taken += count;
    return bytes;
}

std::optional<server_packet> server_connection::read_packet(std::chrono::milliseconds limit)
{
    const std::optional<std::string> header = read_bytes(wire_header_bytes, limit);
    if (!header)
        return std::nullopt;
    std::size_t length = 0;
    server_packet packet = parse_header(*header, length);
    const std::optional<std::string> payload = read_bytes(length, limit);
    if (!payload)
        return std::nullopt;
    packet.payload = *payload;
    return packet;
}

bool server_connection::wait_for_close(std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!ended && std::chrono::steady_clock::now() < deadline)
        take_in(std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now()));
    return ended;
}

bool server_connection::has_unread_bytes()
{
    while (take_in(std::chrono::milliseconds{0})) {
    }
    return all.size() > taken;
}

std::vector<server_packet> server_connection::received_packets() const
{
    std::vector<server_packet> packets;
    std::string_view rest = all;
    while (rest.size() >= wire_header_bytes) {
        std::size_t length = 0;
        server_packet packet = parse_header(rest, length);
        if (rest.size() < wire_header_bytes + length)
            break;
        packet.payload = rest.substr(wire_header_bytes, length);
        packets.push_back(std::move(packet));
        rest.remove_prefix(wire_header_bytes + length);
    }
    return packets;
}

void server_connection::half_close()
{
    shutdown(fd, SHUT_WR);
}

void server_connection::close()
{
    if (fd >= 0)
        ::close(std::exchange(fd, -1));
}

void server_connection::reset()
{
    const linger at_once{.l_onoff = 1, .l_linger = 0};
    setsockopt(fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close();
}

scripted_server::scripted_server(const std::string& address)
    : fd(bind_free_port(address)), bound_port(port_of(fd))
{
    listen(fd, max_waiting_clients);
}

scripted_server::~scripted_server()
{
    stop_listening();
}

int scripted_server::port() const
{
    return bound_port;
}

std::optional<server_connection> scripted_server::accept(std::chrono::milliseconds limit)
{
    if (fd < 0 || !wait_for_socket(fd, POLLIN, limit))
        return std::nullopt;
    const int client = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0)
        return std::nullopt;
    return server_connection{client};
}

bool scripted_server::has_waiting_client()
{
    return fd >= 0 && wait_for_socket(fd, POLLIN, std::chrono::milliseconds{0});
}

void scripted_server::stop_listening()
{
    if (fd >= 0)
        ::close(std::exchange(fd, -1));
}

closed_port::closed_port(const std::string& address) : fd(bind_free_port(address)) {}

closed_port::~closed_port()
{
    ::close(fd);
}

int closed_port::port() const
{
    return port_of(fd);
}

silent_port::silent_port(const std::string& address) : fd(bind_free_port(address))
{
    listen(fd, 0);
    for (int count = 0; count < max_queue_fillers; ++count) {
        const int filler = begin_connect(address, port());
        if (filler < 0)
            break;
        queued.push_back(filler);
        if (!wait_for_socket(filler, POLLOUT, local_connect_time))
            break; // the queue is full: this connection hangs as all later ones will
    }
}

silent_port::~silent_port()
{
    for (const int filler : queued)
        ::close(filler);
    ::close(fd);
}

int silent_port::port() const
{
    return port_of(fd);
}
