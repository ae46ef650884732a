// loopback.cpp - sockets on this machine's loopback addresses.
#include "support/loopback.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

sockaddr_in make_address(const std::string& address, int port)
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port));
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    return place;
}

} // namespace

int bind_free_port(const std::string& address)
{
    const sockaddr_in place = make_address(address, 0);
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) {
        std::perror("cannot bind a port");
        std::abort();
    }
    return fd;
}

int port_of(int fd)
{
    sockaddr_in place{};
    socklen_t length = sizeof place;
    getsockname(fd, reinterpret_cast<sockaddr*>(&place), &length);
    return ntohs(place.sin_port);
}

std::uint16_t free_port()
{
    const int fd = bind_free_port("127.0.0.1");
    const auto port = static_cast<std::uint16_t>(port_of(fd));
    close(fd);
    return port;
}

int begin_connect(const std::string& address, int port)
{
    const sockaddr_in place = make_address(address, port);
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 ||
        errno == EINPROGRESS)
        return fd;
    close(fd);
    return -1;
}

bool wait_for_socket(int fd, short events, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd watched{fd, events, 0};
        const int ready = poll(&watched, 1, left.count() < 0 ? 0 : static_cast<int>(left.count()));
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}
