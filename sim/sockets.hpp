// sockets.hpp - opening the sockets that a server listens on, and watching them.
#pragma once

#include "base/owners.hpp"

#include <cstdint>
#include <string>

namespace sim
{

/// `what`, and what the system says of errno.
std::string system_text(const std::string& what);

/// Listens for TCP connections, or receives UDP datagrams, at an IPv4 address without ever
/// blocking. Port 0 becomes the free one that was chosen. An error text, empty when all is well.
std::string open_tcp_listener(const std::string& address, unique_fd& socket, std::uint16_t& port);
std::string open_udp_receiver(const std::string& address, unique_fd& socket, std::uint16_t& port);

/// Whether a call on a socket has failed only because it would have had to wait.
bool would_block(int error);

/// Whether accepting has failed because descriptors or memory are short, and others may give some
/// back.
bool is_short_of_descriptors(int error);

/// epoll_ctl with `events` for `fd`. False when the system refuses.
bool watch(int epoll_fd, int operation, int fd, std::uint32_t events);

} // namespace sim
