// connect_input.cpp - see connect_input.hpp.
#include "server/inputs/connect_input.hpp"

#include "server/base/sockets.hpp"
#include "server/base/system_text.hpp"
#include "server/inputs/input_limits.hpp"

#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tovrik
{
namespace
{

int read_socket_error(int socket)
{
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) != 0)
        return errno;
    return error;
}

} // namespace

connect_input::connect_input(input_options chosen, input_host& home)
    : input_source(std::move(chosen), home), lines(make_lines())
{
}

std::string connect_input::open(time_point now)
{
    begin(now);
    return {};
}

void connect_input::on_event(int, time_point now)
{
    if (at == stage::looking_up) {
        begin_connecting(now);
    } else if (at == stage::connecting) {
        finish_connecting(now);
    } else if (at == stage::connected) {
        receive(now);
    }
}

void connect_input::on_time(time_point now)
{
    if (now < act_at)
        return;
    if (at == stage::resting) {
        begin(now);
    } else {
        errno = ETIMEDOUT;
        fail(system_text("cannot connect"), now);
    }
}

time_point connect_input::next_time() const
{
    return act_at;
}

void connect_input::begin(time_point now)
{
    question = name_lookup(options.host);
    // The question keeps its descriptor, which its thread writes to; a copy is waited for.
    unique_fd answered{question ? fcntl(question->answered.get(), F_DUPFD_CLOEXEC, 0) : -1};
    if (!waiting.open(host, *this, std::move(answered), EPOLLIN)) {
        fail(system_text("cannot look up " + options.host), now);
        return;
    }
    at = stage::looking_up;
    act_at = never;
}

void connect_input::begin_connecting(time_point now)
{
    if (!question->is_answered)
        return;
    const auto answer = std::exchange(question, nullptr);
    waiting.close();
    if (!answer->error.empty()) {
        fail(answer->error, now);
        return;
    }
    sockaddr_in place = answer->place;
    place.sin_port = htons(options.port);
    unique_fd socket{::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    if (!socket ||
        (connect(socket.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 &&
         errno != EINPROGRESS) ||
        !waiting.open(host, *this, std::move(socket), EPOLLOUT)) {
        fail(system_text("cannot connect"), now);
        return;
    }
    at = stage::connecting;
    act_at = now + connect_patience;
}

void connect_input::finish_connecting(time_point now)
{
    errno = read_socket_error(waiting.get());
    if (errno != 0) {
        fail(system_text("cannot connect"), now);
        return;
    }
    keep_alive(waiting.get());
    waiting.change(EPOLLIN);
    at = stage::connected;
    act_at = never;
    counters.is_connected = true;
    counters.reconnections += std::exchange(was_connected, true) ? 1 : 0;
    if (std::exchange(is_told, false))
        tell("connected");
}

void connect_input::receive(time_point now)
{
    char block[65536];
    const ssize_t count = read(waiting.get(), block, sizeof block);
    if (count > 0) {
        pause = {};
        take_bytes(lines, {block, static_cast<std::size_t>(count)}, now);
        return;
    }
    if (count < 0 && (errno == EINTR || would_block(errno)))
        return;
    const std::string reason =
        count == 0 ? "the connection was closed" : system_text("the connection failed");
    take_rest(lines, now);
    fail(reason, now);
}

/// Tells the first of several failures in a row, and rests.
void connect_input::fail(const std::string& reason, time_point now)
{
    waiting.close();
    counters.is_connected = false;
    at = stage::resting;
    act_at = now + retry_take_pause(pause);
    if (!std::exchange(is_told, true))
        tell(reason + "; trying again");
}

} // namespace tovrik
