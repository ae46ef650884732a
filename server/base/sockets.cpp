// sockets.cpp - see sockets.hpp.
#include "server/base/sockets.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace tovrik
{
namespace
{

std::string open_socket(int type, const std::string& address, unique_fd& opened,
                        std::uint16_t& port)
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &place.sin_addr) != 1)
        return address + ": not an IPv4 address";

    opened = unique_fd{socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    const int on = 1;
    socklen_t size = sizeof place;
    auto* const generic = reinterpret_cast<sockaddr*>(&place);
    const bool stream = type == SOCK_STREAM;
    if (!opened ||
        (stream && setsockopt(opened.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0) ||
        bind(opened.get(), generic, size) != 0 ||
        (stream && listen(opened.get(), SOMAXCONN) != 0) ||
        getsockname(opened.get(), generic, &size) != 0)
        return system_text("cannot listen on " + address + ":" + std::to_string(port));
    port = ntohs(place.sin_port);
    return {};
}

/// Whether accepting failed because the system is out of descriptors or memory.
bool is_out_of_resources(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

} // namespace

std::string listener_open(tcp_listener& listener, const std::string& address, std::uint16_t port)
{
    listener.port = port;
    return open_socket(SOCK_STREAM, address, listener.socket, listener.port);
}

unique_fd listener_accept(tcp_listener& listener, int epoll_fd)
{
    unique_fd accepted{
        accept4(listener.socket.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)};
    if (!accepted && is_out_of_resources(errno)) {
        watch(epoll_fd, EPOLL_CTL_MOD, listener.socket.get(), 0);
        listener.accept_again_at = steady_clock::now() + std::chrono::milliseconds{accept_retry_ms};
    }
    return accepted;
}

void listener_resume(tcp_listener& listener, int epoll_fd, time_point now)
{
    if (now < listener.accept_again_at)
        return;
    listener.accept_again_at = never;
    watch(epoll_fd, EPOLL_CTL_MOD, listener.socket.get(), EPOLLIN);
}

std::string open_udp_receiver(const std::string& address, unique_fd& socket, std::uint16_t& port)
{
    return open_socket(SOCK_DGRAM, address, socket, port);
}

std::string reached_address(int fd)
{
    sockaddr_in place{};
    socklen_t size = sizeof place;
    char text[INET_ADDRSTRLEN] = {};
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&place), &size) != 0 ||
        inet_ntop(AF_INET, &place.sin_addr, text, sizeof text) == nullptr)
        return {};
    return text;
}

bool would_block(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

bool watch(int epoll_fd, int operation, int fd, std::uint32_t events)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = fd;
    return epoll_ctl(epoll_fd, operation, fd, &event) == 0;
}

} // namespace tovrik
