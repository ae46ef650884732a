// listen_input.cpp - see listen_input.hpp.
#include "server/inputs/listen_input.hpp"

#include "server/base/system_text.hpp"
#include "server/inputs/input_limits.hpp"

#include <cerrno>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tovrik
{
namespace
{

/// Maximum number of connections that are accepted before others get their turn.
constexpr std::size_t max_accepted_per_turn = 64;

std::uint32_t find_peer(int socket)
{
    sockaddr_in place{};
    socklen_t size = sizeof place;
    getpeername(socket, reinterpret_cast<sockaddr*>(&place), &size);
    return ntohl(place.sin_addr.s_addr);
}

} // namespace

listen_input::~listen_input()
{
    host.owners.erase(listener.socket.get());
}

std::string listen_input::open(time_point)
{
    std::string error = listener_open(listener, options.bind, options.port);
    if (!error.empty())
        return error;
    if (!watch(host.epoll_fd, EPOLL_CTL_ADD, listener.socket.get(), EPOLLIN))
        return system_text("cannot wait for senders");
    host.owners[listener.socket.get()] = this;
    port = listener.port;
    counters.is_connected = true;
    return {};
}

void listen_input::on_event(int fd, time_point now)
{
    if (fd == listener.socket.get()) {
        accept_senders();
    } else {
        receive(fd, now);
    }
}

void listen_input::on_time(time_point now)
{
    listener_resume(listener, host.epoll_fd, now);
}

time_point listen_input::next_time() const
{
    return listener.accept_again_at;
}

void listen_input::accept_senders()
{
    for (std::size_t i = 0; i < max_accepted_per_turn; ++i) {
        unique_fd accepted = listener_accept(listener, host.epoll_fd);
        if (!accepted)
            return;
        if (senders.size() >= max_senders ||
            !is_allowed(options.allow, find_peer(accepted.get()))) {
            ++counters.refused;
            continue;
        }
        keep_alive(accepted.get());
        const int fd = accepted.get();
        sender added{{}, make_lines()};
        if (added.socket.open(host, *this, std::move(accepted), EPOLLIN))
            senders.emplace(fd, std::move(added));
    }
}

void listen_input::receive(int fd, time_point now)
{
    const auto found = senders.find(fd);
    if (found == senders.end())
        return;
    char block[65536];
    const ssize_t count = read(fd, block, sizeof block);
    if (count > 0) {
        take_bytes(found->second.lines, {block, static_cast<std::size_t>(count)}, now);
        return;
    }
    if (count < 0 && (errno == EINTR || would_block(errno)))
        return;
    take_rest(found->second.lines, now);
    senders.erase(found);
}

} // namespace tovrik
