// server_loop.cpp - see server_loop.hpp.
#include "server/services/server_loop.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/services/pager_telling.hpp"
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

std::uint32_t read_peer_address(int fd)
{
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    const bool is_known = getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) == 0;
    return is_known ? peer.sin_addr.s_addr : 0;
}

client_session& add_session(server_core& core, channel& home, int fd, std::uint64_t number)
{
    const int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // The sockets of clients that are gone are closed at the end of a turn, so no session has fd.
    client_session& session = core.sessions.try_emplace(fd, fd, home, number).first->second;
    session.address = read_peer_address(fd);
    session.gone = !watch(core.epoll.get(), EPOLL_CTL_ADD, fd, EPOLLIN);
    return session;
}

void add_client(server_core& core, channel& home, int fd, time_point now)
{
    client_session& session = add_session(core, home, fd, ++core.clients_so_far);
    session.next_tick = schedule_after(now, core.options.tick_every_ms);
    session.close_at = schedule_after(now, core.options.close_after_ms);
    session.access_by = schedule_after(now, core.options.access_within_ms);
    welcome_client(core, session);
}

/// Tells a client that the server is full. It has the usual time to read that.
void turn_client_away(server_core& core, channel& home, int fd, time_point now)
{
    core_close_client(core, add_session(core, home, fd, 0), kind::closing_when_full, now);
}

/// Who is connected, while some more are let in.
struct head_count {
    std::size_t clients = 0;
    std::size_t turned_away = 0; ///< and not gone yet
    std::map<std::uint32_t, std::size_t> clients_of_address = {};
};

head_count count_heads(const server_core& core)
{
    head_count count;
    for (const auto& [fd, session] : core.sessions) {
        if (session.number == 0) {
            ++count.turned_away;
        } else {
            ++count.clients;
            ++count.clients_of_address[session.address];
        }
    }
    return count;
}

bool has_room(const service_options& options, const head_count& count, std::size_t of_address)
{
    return count.clients < options.max_clients &&
           (options.max_clients_of_address == 0 || of_address < options.max_clients_of_address);
}

void accept_clients(server_core& core, channel& home, time_point now)
{
    head_count count = count_heads(core);
    for (std::size_t i = 0; i < core.options.max_clients + max_clients_turned_away + 1; ++i) {
        unique_fd socket = listener_accept(home.listener, core.epoll.get());
        if (!socket)
            return;
        std::size_t& of_address = count.clients_of_address[read_peer_address(socket.get())];
        if (has_room(core.options, count, of_address)) {
            ++count.clients;
            ++of_address;
            add_client(core, home, socket.release(), now);
        } else {
            ++core.clients_turned_away;
            if (count.turned_away++ < max_clients_turned_away)
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

/// Tells a client once a minute how many messages it has not been sent since it was told last.
void tell_left_out(const server_core& core, client_session& session, time_point now)
{
    constexpr std::chrono::minutes pause{1};
    const std::uint64_t count = session.traffic.left_out - session.left_out_told;
    if (!core.options.tell_left_out || count == 0 || session.closing)
        return;
    if (session.tell_left_out_at == never)
        session.tell_left_out_at = now + pause;
    if (now < session.tell_left_out_at)
        return;
    const char* const what = count == 1 ? " message left out" : " messages left out";
    session_queue_packet(session, {.kind = kind::notice, .payload = std::to_string(count) + what});
    session.left_out_told = session.traffic.left_out;
    session.tell_left_out_at = never;
}

bool is_without_access_too_long(const client_session& session, time_point now)
{
    return !session.admitted && now >= session.access_by;
}

void serve_session(server_core& core, client_session& session, time_point now)
{
    if (now >= session.close_at)
        core_close_client(core, session, core.options.close_kind, now);
    if (is_without_access_too_long(session, now))
        core_close_client(core, session, kind::closing, now);
    tell_left_out(core, session, now);
    if (now >= session.next_tick) {
        session.tick = core.tick;
        session.next_tick = schedule_after(now, core.options.tick_every_ms);
    }
    session.gone = session.gone || now >= session.drop_at;
    pager_serve(core, session);
    session_send(session, now, milliseconds{core.options.pace_ms});
    pager_serve(core, session);
    if (!session.gone && session.waiting_to_write != session.watched_for_write) {
        session.watched_for_write = session.waiting_to_write;
        watch(core.epoll.get(), EPOLL_CTL_MOD, session.socket.get(),
              session.waiting_to_write ? EPOLLIN | EPOLLOUT : EPOLLIN);
    }
}

/// Removes clients that are gone, and closed channels that have no clients any more.
void remove_gone(server_core& core)
{
    for (auto& [fd, session] : core.sessions) {
        if (!session.gone)
            continue;
        session.home->left_out_before += session.traffic.left_out;
        pager_serve(core, session);
    }
    std::erase_if(core.sessions, [](const auto& entry) { return entry.second.gone; });
    std::erase_if(core.channels, [&core](const channel& each) {
        return !each.listener.socket &&
               std::ranges::none_of(core.sessions, [&each](const auto& entry) {
                   return entry.second.home == &each;
               });
    });
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

std::string loop_open_channel(server_core& core, const channel_opening& opening)
{
    channel opened{.name = opening.name, .filter = opening.filter, .asked_port = opening.port};
    std::string error = listener_open(opened.listener, opening.address, opening.port);
    if (!error.empty())
        return error;
    if (!watch(core.epoll.get(), EPOLL_CTL_ADD, opened.listener.socket.get(), EPOLLIN))
        return system_text("cannot wait for clients");
    opened.uuid = server_uuid(opening.seed, opened.listener.port);
    core.channels.push_back(std::move(opened));
    return {};
}

void loop_close_channel(server_core& core, channel& closed)
{
    closed.listener = tcp_listener{};
    const time_point now = steady_clock::now();
    for (auto& [fd, session] : core.sessions) {
        if (session.home == &closed)
            core_close_client(core, session, kind::closing_for_maintenance, now);
    }
}

int loop_wait_ms(const server_core& core, time_point next, time_point now)
{
    for (const auto& each : core.channels) {
        next = std::min(next, each.listener.accept_again_at);
    }
    for (const auto& [fd, session] : core.sessions) {
        next = std::min({next, session_send_time(session), session.next_tick, session.close_at,
                         session.access_by, session.drop_at, session.tell_left_out_at,
                         session_stall_end(session)});
    }
    if (next == never)
        return -1;
    if (next <= now)
        return 0;
    constexpr milliseconds max_wait{60000};
    const auto wait =
        std::chrono::ceil<milliseconds>(std::min<steady_clock::duration>(next - now, max_wait));
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
    remove_gone(core);
}

void loop_leave(server_core& core)
{
    for (auto& each : core.channels) {
        each.listener.socket = unique_fd{};
        each.listener.accept_again_at = never;
    }
    core_close_clients(core, kind::closing_for_maintenance);
}

void loop_drop_clients(server_core& core)
{
    for (auto& [fd, session] : core.sessions) {
        session.gone = true;
    }
    remove_gone(core);
}

bool loop_is_over(const server_core& core)
{
    return core.sessions.empty();
}

} // namespace tovrik
