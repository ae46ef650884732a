// directory.cpp - see directory.hpp.
#include "server/practice/directory.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/practice/directory_answer.hpp"

#include <algorithm>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace tovrik
{
namespace
{

using std::chrono::milliseconds;

/// An endless answer is repeated in parts of at least this size.
constexpr std::size_t min_endless_bytes = 65536;

void accept_connections(directory_service& directory, int epoll_fd)
{
    for (std::size_t i = 0; i < max_directory_connections; ++i) {
        directory_connection connection{.socket = listener_accept(directory.listener, epoll_fd)};
        const int fd = connection.socket.get();
        if (fd < 0)
            return;
        connection.end_at = steady_clock::now() + milliseconds{max_directory_ms};
        if (directory.connections.size() < max_directory_connections &&
            watch(epoll_fd, EPOLL_CTL_ADD, fd, EPOLLIN))
            directory.connections.try_emplace(fd, std::move(connection));
    }
}

bool is_finished(const directory_connection& connection)
{
    return connection.sent_bytes == connection.answer.size() && connection.repeat_from == 0;
}

/// Watches for input until it ends, and for writing while there is something to send.
void watch_connection(const directory_connection& connection, int epoll_fd)
{
    std::uint32_t events = 0;
    if (!connection.input_ended)
        events |= EPOLLIN;
    if (connection.answering && !is_finished(connection))
        events |= EPOLLOUT;
    watch(epoll_fd, EPOLL_CTL_MOD, connection.socket.get(), events);
}

void make_endless(directory_connection& connection, std::size_t body_bytes)
{
    connection.repeat_from = connection.answer.size() - body_bytes;
    const std::string part =
        body_bytes > 0 ? connection.answer.substr(connection.repeat_from) : std::string{"\n"};
    while (connection.answer.size() < connection.repeat_from + min_endless_bytes) {
        connection.answer += part;
    }
    connection.end_at = never;
}

std::string make_body(const directory_service& directory, const server_options& options,
                      const directory_connection& connection)
{
    return options.directory_text
               ? *options.directory_text
               : own_directory_line(options, reached_address(connection.socket.get()),
                                    directory.server_port);
}

void choose_answer(const directory_service& directory, const server_options& options,
                   directory_connection& connection)
{
    const directory_fault fault = options.directory_answers;
    const std::string body = make_body(directory, options, connection);
    connection.answer = directory_answer(connection.request, body, fault);
    connection.answer_at = steady_clock::now() + milliseconds{options.directory_delay_ms};
    // The answer may be long, so the client gets the whole time again.
    connection.end_at = connection.answer_at + milliseconds{max_directory_ms};
    if (fault == directory_fault::endless && connection.answer.ends_with(body))
        make_endless(connection, body.size());
    if (fault == directory_fault::silent)
        connection.answer_at = connection.end_at = never;
}

/// Reads what has arrived. What follows the request is dropped.
void receive_request(const directory_service& directory, const server_options& options,
                     directory_connection& connection)
{
    char block[4096];
    const ssize_t count = recv(connection.socket.get(), block, sizeof block, MSG_DONTWAIT);
    if (count < 0) {
        connection.gone = errno != EINTR && !would_block(errno);
        return;
    }
    connection.input_ended = count == 0;
    const bool has_all = connection.answering && is_finished(connection);
    const bool gets_nothing =
        connection.answer.empty() || options.directory_answers == directory_fault::silent;
    // A client that has shut down its sending side may still be reading.
    connection.gone = connection.input_ended && (has_all || gets_nothing);
    if (!connection.answer.empty())
        return;
    connection.request.append(block, static_cast<std::size_t>(count));
    if (is_request_complete(connection.request) ||
        connection.request.size() > max_directory_request_bytes)
        choose_answer(directory, options, connection);
}

/// Sends more of the answer, until the socket is full or the turn is over.
void send_answer(directory_connection& connection)
{
    connection.answering = true;
    connection.answer_at = never;
    for (int i = 0; i < max_directory_sends_per_turn && !is_finished(connection); ++i) {
        if (connection.sent_bytes == connection.answer.size())
            connection.sent_bytes = connection.repeat_from;
        const ssize_t count =
            send(connection.socket.get(), connection.answer.data() + connection.sent_bytes,
                 connection.answer.size() - connection.sent_bytes, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            connection.sent_bytes += static_cast<std::size_t>(count);
        } else if (would_block(errno)) {
            return;
        } else if (errno != EINTR) {
            connection.gone = true;
            return;
        }
    }
    // Closing the connection now would lose what the client has not read yet. So the client closes
    // it, unless it has shut down its side already.
    if (is_finished(connection)) {
        shutdown(connection.socket.get(), SHUT_WR);
        connection.gone = connection.input_ended;
    }
}

} // namespace

std::string directory_open(directory_service& directory, const server_options& options,
                           int epoll_fd, std::uint16_t server_port)
{
    if (!options.directory_port)
        return {};
    std::string error =
        listener_open(directory.listener, options.bind_address, *options.directory_port);
    if (!error.empty())
        return error;
    if (!watch(epoll_fd, EPOLL_CTL_ADD, directory.listener.socket.get(), EPOLLIN))
        return system_text("cannot wait for events");
    directory.server_port = server_port;
    return {};
}

bool directory_on_event(directory_service& directory, const server_options& options, int epoll_fd,
                        int fd)
{
    if (directory.listener.port == 0)
        return false;
    if (fd == directory.listener.socket.get()) {
        accept_connections(directory, epoll_fd);
        return true;
    }
    const auto found = directory.connections.find(fd);
    if (found == directory.connections.end())
        return false;
    directory_connection& connection = found->second;
    if (!connection.input_ended) {
        receive_request(directory, options, connection);
    } else if (!connection.answering) {
        connection.gone = true; // nothing is watched for, so this event is its loss
    }
    if (!connection.gone && connection.answering && !is_finished(connection))
        send_answer(connection);
    watch_connection(connection, epoll_fd);
    return true;
}

void directory_on_time(directory_service& directory, int epoll_fd, time_point now)
{
    listener_resume(directory.listener, epoll_fd, now);
    for (auto& [fd, connection] : directory.connections) {
        connection.gone = connection.gone || now >= connection.end_at;
        if (connection.gone || now < connection.answer_at)
            continue;
        send_answer(connection);
        watch_connection(connection, epoll_fd);
    }
    std::erase_if(directory.connections, [](const auto& entry) { return entry.second.gone; });
}

time_point directory_next_time(const directory_service& directory)
{
    time_point next = directory.listener.accept_again_at;
    for (const auto& [fd, connection] : directory.connections) {
        next = std::min({next, connection.end_at, connection.answer_at});
    }
    return next;
}

} // namespace tovrik
