// server_core.cpp - see server_core.hpp.
#include "sim/server_core.hpp"

#include "sim/limits.hpp"
#include "sim/requests.hpp"
#include "sim/service_requests.hpp"
#include "sim/system_text.hpp"

#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace sim
{
namespace
{

using std::chrono::milliseconds;

time_point schedule_after(time_point now, int ms)
{
    return ms > 0 ? now + milliseconds{ms} : never;
}

steady_clock::duration compute_interval(const server_options& options)
{
    const double rate = std::min(options.rate_per_minute, max_rate_per_minute);
    return std::chrono::duration_cast<steady_clock::duration>(
        std::chrono::duration<double>{60 / rate});
}

void add_client(server_core& core, int fd, time_point now)
{
    const int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // The sockets of clients that are gone are closed at the end of a turn, so no session has fd.
    client_session& session =
        core.sessions.try_emplace(fd, fd, core.clients_so_far + 1).first->second;
    ++core.clients_so_far;
    session.gone = !watch(core.epoll.get(), EPOLL_CTL_ADD, fd, EPOLLIN);
    session.next_tick = schedule_after(now, core.options.tick_every_ms);
    session.close_at = schedule_after(now, core.options.close_after_ms);
    welcome_client(core, session);
}

void accept_clients(server_core& core, time_point now)
{
    for (std::size_t i = 0; i < core.options.max_clients + 1; ++i) {
        unique_fd socket = listener_accept(core.listener, core.epoll.get());
        if (!socket)
            return;
        if (core.sessions.size() < core.options.max_clients)
            add_client(core, socket.release(), now);
    }
}

void receive_from(server_core& core, client_session& session)
{
    session_receive(session);
    packet received;
    packet_taken taken = packet_taken::none;
    // A client may say good-bye and close its connection at once. What came before the end counts.
    while ((taken = session_take_packet(session, received)) == packet_taken::whole) {
        if (core.on_packet)
            core.on_packet(session, received);
        if (!session.closing)
            answer_packet(core, session, received);
    }
    session.gone = session.gone || taken == packet_taken::broken;
}

void close_session(const server_core& core, client_session& session, std::uint32_t close_kind,
                   time_point now)
{
    const packet last{.kind = close_kind, .payload = "Good Bye"};
    session_close(session, encode_shared(last),
                  now + milliseconds{core.options.pace_ms + closing_grace_ms});
}

void serve_session(server_core& core, client_session& session, time_point now)
{
    if (now >= session.close_at)
        close_session(core, session, core.options.close_kind, now);
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

void archive_item(server_core& core, const feed_item& item)
{
    if (offers_reports(core.options.capabilities))
        core.services.archive.add(item.message, std::time(nullptr), core.services.reference);
}

/// Queues an item for every admitted client, and a notice after it if a pager list asks for it.
void pass_on(server_core& core, const feed_item& item)
{
    archive_item(core, item);
    for (auto& [fd, session] : core.sessions) {
        if (!session.admitted)
            continue;
        if (session.wants_uplinks || !item.uplink)
            session_queue_transmission(session, item.bytes, core.options.queue_limit);
        if (const auto notice = pager_notice(core, session, item.message))
            session_queue_transmission(session, encode_shared(*notice), core.options.queue_limit);
    }
}

std::size_t pass_on_all(server_core& core, std::vector<transmission> received)
{
    for (transmission& message : received) {
        if (const auto item = core.messages.add(std::move(message)))
            pass_on(core, *item);
    }
    return received.size();
}

void generate_transmissions(server_core& core, time_point now)
{
    const auto interval = compute_interval(core.options);
    for (int i = 0; i < max_transmissions_per_turn && now >= core.next_transmission; ++i) {
        core.next_transmission += interval;
        if (const auto item = core.messages.next())
            pass_on(core, *item);
    }
    // After a stall, what was missed is not sent later.
    core.next_transmission = std::max(core.next_transmission, now);
}

} // namespace

server_core::server_core(const server_options& chosen)
    : options(chosen), messages(chosen, services.reference),
      tick(encode_shared({.kind = kind::tick, .payload = "^"})), json(chosen)
{
}

std::string core_open(server_core& core)
{
    std::string error = listener_open(core.listener, core.options.bind_address, core.options.port);
    if (!error.empty())
        return error;
    core.epoll = unique_fd{epoll_create1(EPOLL_CLOEXEC)};
    core.wake = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    if (!core.epoll || !core.wake ||
        !watch(core.epoll.get(), EPOLL_CTL_ADD, core.listener.socket.get(), EPOLLIN) ||
        !watch(core.epoll.get(), EPOLL_CTL_ADD, core.wake.get(), EPOLLIN))
        return system_text("cannot wait for events");
    error = directory_open(core.directory, core.options, core.epoll.get(), core.listener.port);
    if (error.empty())
        error = json_open(core.json, core.options, core.epoll.get());
    if (!error.empty())
        return error;
    core.started_at = steady_clock::now();
    if (core.options.rate_per_minute > 0)
        core.next_transmission = core.started_at + compute_interval(core.options);
    for (const auto& item : core.messages.history()) {
        archive_item(core, item);
    }
    return {};
}

int core_wait_ms(const server_core& core, time_point now)
{
    time_point next = std::min({core.next_transmission, core.listener.accept_again_at,
                                directory_next_time(core.directory)});
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

void core_on_event(server_core& core, int fd)
{
    if (fd == core.wake.get()) {
        eventfd_t count = 0;
        eventfd_read(fd, &count);
    } else if (fd == core.listener.socket.get()) {
        accept_clients(core, steady_clock::now());
    } else if (const auto found = core.sessions.find(fd); found != core.sessions.end()) {
        found->second.waiting_to_write = false;
        receive_from(core, found->second);
    } else if (!directory_on_event(core.directory, core.options, core.epoll.get(), fd)) {
        pass_on_all(core, json_on_event(core.json, core.epoll.get(), fd));
    }
}

void core_on_time(server_core& core, time_point now)
{
    listener_resume(core.listener, core.epoll.get(), now);
    if (now >= core.next_transmission)
        generate_transmissions(core, now);
    for (auto& [fd, session] : core.sessions) {
        serve_session(core, session, now);
    }
    directory_on_time(core.directory, core.epoll.get(), now);
    std::erase_if(core.sessions, [](const auto& entry) { return entry.second.gone; });
}

bool core_transmit(server_core& core, const std::string& xml)
{
    const auto item = core.messages.add(xml);
    if (item)
        pass_on(core, *item);
    return item.has_value();
}

std::size_t core_take_json(server_core& core, std::string_view lines)
{
    json_lines& pushed = core.json.pushed_lines;
    const std::size_t count = pass_on_all(core, pushed.take(lines));
    return count + pass_on_all(core, pushed.take_rest());
}

std::size_t core_broadcast(server_core& core, const packet& sent)
{
    const auto bytes = encode_shared(sent);
    std::size_t count = 0;
    for (auto& [fd, session] : core.sessions) {
        if (session_queue(session, bytes))
            ++count;
    }
    return count;
}

std::size_t core_close_clients(server_core& core, std::uint32_t close_kind)
{
    const std::size_t count = core_client_count(core);
    for (auto& [fd, session] : core.sessions) {
        close_session(core, session, close_kind, steady_clock::now());
    }
    return count;
}

std::size_t core_client_count(const server_core& core)
{
    const auto count =
        std::count_if(core.sessions.begin(), core.sessions.end(), [](const auto& entry) {
            return !entry.second.closing && !entry.second.gone;
        });
    return static_cast<std::size_t>(count);
}

} // namespace sim
