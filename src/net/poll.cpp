// poll.cpp - see poll.hpp.
#include "net/poll.hpp"

#include "app/app_state.hpp"
#include "net/idle_rule.hpp"
#include "net/packet_dispatch.hpp"
#include "net/packet_input.hpp"
#include "net/readiness.hpp"
#include "ui/modal_box.hpp"

#include <chrono>
#include <ctime>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr unsigned poll_interval_s = 1;

/// A cycle over many busy servers stops for a moment after this time, so that keys are read.
constexpr std::chrono::milliseconds max_run{20};
constexpr suseconds_t break_us = 1'000;

bool is_polled(const server_entry& entry)
{
    return entry.socket_fd != 0 && entry.connected == 1;
}

/// Whether a packet would open a box over another one. It stays the server's next one meanwhile.
bool has_to_wait(const server_entry& entry)
{
    return modal_box_is_open() &&
           (entry.rx_waits == 1 || packet_opens_box(entry, *entry.rx_packet));
}

/// Takes a server's packet, if it has a whole one, and applies the idle rule. True if it had one.
bool visit_server(server_entry& entry, bool may_be_ready, std::time_t now)
{
    // Kept on purpose: the end of the stream is not taken for the end of the connection; the idle
    // rule ends that. Test: poll_cycle.does_not_react_to_the_end_of_a_connection_alone.
    const bool has_packet =
        entry.rx_waits == 1 || ((may_be_ready || packet_is_empty(entry)) &&
                                receive_packet(entry.socket_fd, entry) == packet_complete);
    if (has_packet) {
        entry.last_data_time = now;
        entry.rx_waits = has_to_wait(entry) ? 1 : 0;
    }
    if (has_packet && entry.rx_waits == 0) {
        // Taken out first: a packet may close its own connection, which drops what is in there.
        const received_packet packet = packet_take(entry);
        packet_dispatch(entry, *packet);
    }
    idle_rule_apply(entry, now);
    return has_packet;
}

/// Whether a run of the cycle, as long as which keys wait, has lasted long.
bool is_long(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::steady_clock::now() - begin >= max_run;
}

/// Sets the alarm for when the key loop has had a round.
void begin_break()
{
    const itimerval soon = {{0, 0}, {0, break_us}};
    setitimer(ITIMER_REAL, &soon, nullptr);
}

/// Visits servers from where the cycle stands. False if it broke off because keys were waiting.
bool continue_cycle(poll_progress& cycle)
{
    const auto begin = std::chrono::steady_clock::now();
    readiness ready = readiness_ask(app_state.servers, cycle.next, is_polled);
    while (cycle.next < app_state.servers->count) {
        server_entry* entry = server_at(app_state.servers, cycle.next);
        const bool may_be_ready = readiness_of(ready, *entry);
        ++cycle.next;
        if (!is_polled(*entry) || !visit_server(*entry, may_be_ready, cycle.now))
            continue;
        if (is_long(begin) && cycle.next < app_state.servers->count)
            return false;
    }
    return true;
}

} // namespace

void poll_servers(int)
{
    poll_progress& cycle = app_state.poll;
    if (cycle.next == 0)
        cycle.now = std::time(nullptr);
    if (!continue_cycle(cycle))
        return begin_break();
    cycle.next = 0;
    alarm(poll_interval_s);
}
