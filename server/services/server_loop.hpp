// server_loop.hpp - what a server does when something arrives, and when something is due.
#pragma once

#include "server/services/server_core.hpp"

#include <cstdint>
#include <string>

namespace tovrik
{

/// Opens what the core waits with, and starts its clocks. Returns an error text, empty on success.
std::string loop_open(server_core& core);

/// What a channel is opened with.
struct channel_opening {
    std::string name = {};
    std::string address = "127.0.0.1"; ///< IPv4, dotted
    std::uint16_t port = 0;            ///< 0: any free one
    std::string seed = {};             ///< its identity is made of this and the port
    message_filter filter = {};
};

/// Opens a channel. Returns an error text, empty on success.
std::string loop_open_channel(server_core& core, const channel_opening& opening);

/// Tells the clients of a channel of the end with a packet of kind 100, and closes its port. The
/// channel is removed when the last of them has gone.
void loop_close_channel(server_core& core, channel& closed);

/// How long the loop may wait for an event, in milliseconds; -1: without a limit. `next` is when
/// its owner has something to do; `never` for nothing.
int loop_wait_ms(const server_core& core, time_point next, time_point now);

/// Handles a readiness event of one of the core's descriptors. False if `fd` is none of them.
bool loop_on_event(server_core& core, int fd);

/// Does all that is due, sends what may be sent, and removes the clients that are gone.
void loop_on_time(server_core& core, time_point now);

/// Says good-bye for maintenance (100) to every client, and accepts no more. Whoever owns the core
/// then lets the loop run until loop_is_over, so that clients have time to read it; that takes the
/// pace and closing_grace_ms at most.
void loop_leave(server_core& core);

/// Closes all connections at once.
void loop_drop_clients(server_core& core);

/// Whether no connection is left.
bool loop_is_over(const server_core& core);

} // namespace tovrik
