// web_connections.cpp - see web_connections.hpp.
#include "server/web/web_connections.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace tovrik
{
namespace
{

using std::chrono::milliseconds;

time_point make_end(int after_ms)
{
    return steady_clock::now() + milliseconds{after_ms};
}

/// The address of this machine that a connection came to.
std::string address_of_own_end(int fd)
{
    sockaddr_in place{};
    socklen_t size = sizeof place;
    std::array<char, INET_ADDRSTRLEN> text{};
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&place), &size) != 0 ||
        inet_ntop(AF_INET, &place.sin_addr, text.data(), text.size()) == nullptr)
        return {};
    return text.data();
}

/// What was sent before the connection is cut would be lost if the asker were still sending. So the
/// asker closes it.
void begin_closing(web_connection& connection, int epoll_fd)
{
    shutdown(connection.socket.get(), SHUT_WR);
    connection.closing = true;
    connection.end_at = make_end(max_web_closing_ms);
    watch(epoll_fd, EPOLL_CTL_MOD, connection.socket.get(), EPOLLIN);
}

void send_answer(web_connection& connection, int epoll_fd)
{
    while (connection.sent_bytes < connection.answer.size()) {
        const ssize_t count =
            send(connection.socket.get(), connection.answer.data() + connection.sent_bytes,
                 connection.answer.size() - connection.sent_bytes, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            connection.sent_bytes += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            connection.gone = !would_block(errno);
            return;
        }
    }
    begin_closing(connection, epoll_fd);
}

void begin_answer(web_connection& connection, int epoll_fd, std::string answer)
{
    connection.answer = std::move(answer);
    connection.end_at = make_end(max_web_answer_ms);
    watch(epoll_fd, EPOLL_CTL_MOD, connection.socket.get(), EPOLLOUT);
    send_answer(connection, epoll_fd);
}

/// Reads what has arrived, at most a block. True if the asker sends no more.
bool receive_bytes(web_connection& connection, std::string& bytes)
{
    std::array<char, 4096> block;
    const ssize_t count = recv(connection.socket.get(), block.data(), block.size(), MSG_DONTWAIT);
    if (count > 0)
        bytes.assign(block.data(), static_cast<std::size_t>(count));
    connection.gone = count < 0 && errno != EINTR && !would_block(errno);
    return count == 0;
}

void receive_request(web_connection& connection, http_desk& desk, int epoll_fd)
{
    std::string bytes;
    const bool has_ended = receive_bytes(connection, bytes);
    connection.request += bytes;
    if (is_request_whole(connection.request) || has_ended) {
        const std::string reached = address_of_own_end(connection.socket.get());
        begin_answer(connection, epoll_fd, desk.answer(connection.request, reached));
    } else if (connection.request.size() > max_web_request_bytes) {
        begin_answer(connection, epoll_fd, http_refusal("431 Request Header Fields Too Large"));
    }
}

/// Drops what an asker that has its answer still sends.
void wait_for_close(web_connection& connection)
{
    std::string dropped;
    if (receive_bytes(connection, dropped))
        connection.gone = true;
}

void take_step(web_connection& connection, http_desk& desk, int epoll_fd)
{
    if (connection.closing)
        wait_for_close(connection);
    else if (!connection.answer.empty())
        send_answer(connection, epoll_fd);
    else
        receive_request(connection, desk, epoll_fd);
}

void make_room(web_connections& connections)
{
    if (connections.askers.size() < max_web_connections)
        return;
    const auto age = [](const auto& entry) {
        return entry.second.gone ? time_point::min() : entry.second.begun_at;
    };
    connections.askers.erase(std::ranges::min_element(connections.askers, {}, age));
}

void accept_connections(web_connections& connections, http_desk& desk)
{
    for (std::size_t i = 0; i < max_web_connections; ++i) {
        web_connection accepted{.socket =
                                    listener_accept(connections.listener, connections.epoll.get())};
        const int fd = accepted.socket.get();
        if (fd < 0)
            return;
        accepted.begun_at = steady_clock::now();
        accepted.end_at = make_end(max_web_request_ms);
        make_room(connections);
        if (!watch(connections.epoll.get(), EPOLL_CTL_ADD, fd, EPOLLIN))
            continue;
        web_connection& asker = connections.askers.emplace(fd, std::move(accepted)).first->second;
        // Whoever has asked already is answered before others may need the place.
        take_step(asker, desk, connections.epoll.get());
    }
}

/// Tells an asker that its time is over, if there was still a question to wait for.
void end_connection(web_connection& connection)
{
    if (connection.answer.empty() && !connection.closing) {
        const std::string text = http_refusal("408 Request Timeout");
        send(connection.socket.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    connection.gone = true;
}

} // namespace

std::string web_connections_open(web_connections& connections, const std::string& address,
                                 std::uint16_t port)
{
    std::string error = listener_open(connections.listener, address, port);
    if (!error.empty())
        return error;
    connections.epoll = unique_fd{epoll_create1(EPOLL_CLOEXEC)};
    if (!connections.epoll ||
        !watch(connections.epoll.get(), EPOLL_CTL_ADD, connections.listener.socket.get(), EPOLLIN))
        return system_text("cannot wait for events");
    return {};
}

void web_connections_on_event(web_connections& connections, http_desk& desk, int fd)
{
    if (fd == connections.listener.socket.get()) {
        accept_connections(connections, desk);
        return;
    }
    const auto found = connections.askers.find(fd);
    if (found != connections.askers.end() && !found->second.gone)
        take_step(found->second, desk, connections.epoll.get());
}

void web_connections_on_time(web_connections& connections, time_point now)
{
    listener_resume(connections.listener, connections.epoll.get(), now);
    for (auto& [fd, connection] : connections.askers) {
        if (now >= connection.end_at && !connection.gone)
            end_connection(connection);
    }
    std::erase_if(connections.askers, [](const auto& entry) { return entry.second.gone; });
}

time_point web_connections_next_time(const web_connections& connections)
{
    time_point next = connections.listener.accept_again_at;
    for (const auto& [fd, connection] : connections.askers)
        next = std::min(next, connection.end_at);
    return next;
}

} // namespace tovrik
