// server_core.hpp - the practice server without its thread: sockets, clients and what is due when.
//
// Owns the listening socket, the clients and the feed. practice_server owns the thread, the record
// of what clients sent, and the one lock under which everything here runs.
#pragma once

#include "sim/client_session.hpp"
#include "sim/directory.hpp"
#include "sim/feed.hpp"
#include "sim/json_input.hpp"
#include "sim/options.hpp"
#include "sim/services.hpp"
#include "sim/sockets.hpp"

#include <functional>
#include <map>
#include <string>

namespace sim
{

struct server_core {
    explicit server_core(const server_options& chosen);

    const server_options& options;                                       ///< must outlive the core
    std::function<void(const client_session&, const packet&)> on_packet; ///< may be empty

    unique_fd epoll;
    unique_fd wake; ///< other threads write to it to end a wait
    tcp_listener listener;

    std::map<int, client_session> sessions; ///< by descriptor
    std::uint64_t clients_so_far = 0;
    service_state services;
    feed messages; ///< uses the services' reference data
    wire_bytes tick;
    directory_service directory;
    json_input json;

    time_point started_at;
    time_point next_transmission = never;
};

/// Opens the sockets and starts the clocks. Returns an error text, empty on success.
std::string core_open(server_core& core);

/// How long the loop may wait for an event, in milliseconds; -1: without a limit.
int core_wait_ms(const server_core& core, time_point now);

/// Handles one readiness event of epoll_wait.
void core_on_event(server_core& core, int fd);

/// Does all that is due, sends what may be sent, and removes the clients that are gone.
void core_on_time(server_core& core, time_point now);

/// Queues a document for every admitted client. False if it does not fit a packet.
bool core_transmit(server_core& core, const std::string& xml);

/// Queues the messages of lines of JSON for every admitted client. Returns their number.
std::size_t core_take_json(server_core& core, std::string_view lines);

/// Queues a packet for every client, admitted or not. Returns the number of clients that it was
/// queued for.
std::size_t core_broadcast(server_core& core, const packet& sent);

/// Tells every client of the end with a packet of `close_kind`. Returns the number of clients told.
std::size_t core_close_clients(server_core& core, std::uint32_t close_kind);

/// The number of clients that are connected and have not been told of the end.
std::size_t core_client_count(const server_core& core);

} // namespace sim
