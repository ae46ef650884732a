// sockets.hpp - the sockets that a server listens on: opening, accepting, watching.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"

#include <cstdint>
#include <string>

namespace tovrik
{

/// A socket that accepts TCP connections.
struct tcp_listener {
    unique_fd socket{};
    std::uint16_t port = 0;             ///< 0: not open
    time_point accept_again_at = never; ///< accepting rests until then; never: it does not rest
};

/// Listens for TCP connections at an IPv4 address without ever blocking. Port 0 stands for any free
/// one; the listener's port is the one that was taken. Returns an error text, empty on success.
std::string listener_open(tcp_listener& listener, const std::string& address, std::uint16_t port);

/// Accepts a connection that waits; its socket does not block. The result is empty if there is
/// none. When the system is out of descriptors, accepting rests for accept_retry_ms: otherwise the
/// client that waits would wake the loop again and again.
unique_fd listener_accept(tcp_listener& listener, int epoll_fd);

/// Resumes accepting if its rest is over.
void listener_resume(tcp_listener& listener, int epoll_fd, time_point now);

/// Receives UDP datagrams at an IPv4 address without ever blocking. Port 0 stands for any free one
/// and is replaced by the one that was taken. Returns an error text, empty on success.
std::string open_udp_receiver(const std::string& address, unique_fd& socket, std::uint16_t& port);

/// The address of this machine that a connected socket's peer came to, dotted. Empty if the system
/// does not say.
std::string reached_address(int fd);

/// Whether a call on a socket failed only because it would have had to wait.
bool would_block(int error);

/// Calls epoll_ctl with `events` for `fd`. False when the system refuses.
bool watch(int epoll_fd, int operation, int fd, std::uint32_t events);

} // namespace tovrik
