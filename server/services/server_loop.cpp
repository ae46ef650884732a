// server_loop.cpp - see server_loop.hpp.
#include "server/services/server_loop.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/services/requests.hpp"
#include "server/services/server_identity.hpp"

#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace tovrik
{
namespace
{

using std::chrono::milliseconds;

time_point schedule_after(time_point now, int ms)
{
    return ms > 0 ? now + milliseconds{ms} : never;
}

client_session& add_session(server_core& core, const channel& home, int fd, std::uint64_t number)
{
    const int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // The sockets of clients that are gone are closed at the end of a turn, so no session has fd.
    client_session& session = core.sessions.try_emplace(fd, fd, home, number).first->second;
    session.gone = !watch(core.epoll.get(), EPOLL_CTL_ADD, fd, EPOLLIN);
    return session;
}

void add_client(server_core& core, const channel& home, int fd, time_point now)
{
    client_session& session = add_session(core, home, fd, ++core.clients_so_far);
    session.next_tick = schedule_after(now, core.options.tick_every_ms);
    session.close_at = schedule_after(now, core.options.close_after_ms);
    welcome_client(core, session);
}

/// Tells a client that the server is full. It has the usual time to read that.
void turn_client_away(server_core& core, const channel& home, int fd, time_point now)
{
    core_close_client(core, add_session(core, home, fd, 0), kind::closing_when_full, now);
}

void accept_clients(server_core& core, channel& home, time_point now)
{
    const auto total = core.sessions.size();
    auto turned_away = static_cast<std::size_t>(
        std::count_if(core.sessions.begin(), core.sessions.end(),
                      [](const auto& entry) { return entry.second.number == 0; }));
    auto clients = total - turned_away;
    for (std::size_t i = 0; i < core.options.max_clients + max_clients_turned_away + 1; ++i) {
        unique_fd socket = listener_accept(home.listener, core.epoll.get());
        if (!socket)
            return;
        if (clients < core.options.max_clients) {
            ++clients;
            add_client(core, home, socket.release(), now);
        } else if (turned_away < max_clients_turned_away) {
            ++turned_away;
            turn_client_away(core, home, socket.release(), now);
        }
    }
}

void receive_from(server_core& core, client_session& session)
{
    session_receive(session);
    packet received;
    packet_taken taken = packet_taken::none;
    // A client may say good-bye and close its connection at once. What came before the end counts.
    while ((taken = session_take_packet(session, received)) == packet_taken::whole) {
        if (core.on_packet && session.number != 0)
            core.on_packet(session, received);
        if (!session.closing)
            answer_packet(core, session, received);
    }
    session.gone = session.gone || taken == packet_taken::broken;
}

void serve_session(server_core& core, client_session& session, time_point now)
{
    if (now >= session.close_at)
        core_close_client(core, session, core.options.close_kind, now);
    if (now >= session.next_tick) {
        session.tick = core.tick;
        session.next_tick = schedule_after(now, core.options.tick_every_ms);
    }
    session.gone = session.gone || now >= session.drop_at;
    session_send(session, now, milliseconds{core.options.pace_ms});
    if (!session.gone && session.waiting_to_write != session.watched_for_write) {
        session.watched_for_write = session.waiting_to_write;
        watch(core.epoll.get(), EPOLL_CTL_MOD, session.socket.get(),
              session.waiting_to_write ? EPOLLIN | EPOLLOUT : EPOLLIN);
    }
}

} // namespace

std::string loop_open(server_core& core)
{
    core.epoll = unique_fd{epoll_create1(EPOLL_CLOEXEC)};
    core.wake = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    if (!core.epoll || !core.wake ||
        !watch(core.epoll.get(), EPOLL_CTL_ADD, core.wake.get(), EPOLLIN))
        return system_text("cannot wait for events");
    core.started_at = steady_clock::now();
    return {};
}

std::string loop_open_channel(server_core& core, const std::string& address, std::uint16_t port,
                              const std::string& seed)
{
    channel opened;
    std::string error = listener_open(opened.listener, address, port);
    if (!error.empty())
        return error;
    if (!watch(core.epoll.get(), EPOLL_CTL_ADD, opened.listener.socket.get(), EPOLLIN))
        return system_text("cannot wait for clients");
    opened.uuid = server_uuid(seed, opened.listener.port);
    core.channels.push_back(std::move(opened));
    return {};
}

int loop_wait_ms(const server_core& core, time_point next, time_point now)
{
    for (const auto& each : core.channels) {
        next = std::min(next, each.listener.accept_again_at);
    }
    for (const auto& [fd, session] : core.sessions) {
        next = std::min({next, session_send_time(session), session.next_tick, session.close_at,
                         session.drop_at});
    }
    if (next == never)
        return -1;
    constexpr milliseconds max_wait{60000};
    const auto wait = std::chrono::ceil<milliseconds>(std::min<steady_clock::duration>(
        std::max(next - now, steady_clock::duration::zero()), max_wait));
    return static_cast<int>(wait.count());
}

bool loop_on_event(server_core& core, int fd)
{
    if (fd == core.wake.get()) {
        eventfd_t count = 0;
        eventfd_read(fd, &count);
        return true;
    }
    for (auto& each : core.channels) {
        if (fd == each.listener.socket.get()) {
            accept_clients(core, each, steady_clock::now());
            return true;
        }
    }
    const auto found = core.sessions.find(fd);
    if (found == core.sessions.end())
        return false;
    found->second.waiting_to_write = false;
    receive_from(core, found->second);
    return true;
}

void loop_on_time(server_core& core, time_point now)
{
    for (auto& each : core.channels) {
        listener_resume(each.listener, core.epoll.get(), now);
    }
    for (auto& [fd, session] : core.sessions) {
        serve_session(core, session, now);
    }
    std::erase_if(core.sessions, [](const auto& entry) { return entry.second.gone; });
}

void loop_leave(server_core& core)
{
    for (auto& each : core.channels) {
        each.listener.socket = unique_fd{};
        each.listener.accept_again_at = never;
    }
    core_close_clients(core, kind::closing_for_maintenance);
}

bool loop_is_over(const server_core& core)
{
    return core.sessions.empty();
}

} // namespace tovrik
