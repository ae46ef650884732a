// server_core.hpp - a server without its thread: its channels, its clients, what it keeps for them.
//
// Owns the sockets and the sessions. server_loop decides what happens when, requests what clients
// get, publishing who is sent a message. Whoever owns the core owns the thread that all this runs
// in.
#pragma once

#include "server/services/access_tries.hpp"
#include "server/services/service_options.hpp"
#include "server/sessions/channel.hpp"
#include "server/sessions/client_session.hpp"
#include "server/storage/memory_store.hpp"

#include <deque>
#include <functional>
#include <list>
#include <map>

namespace tovrik
{

/// A message that is ready to be queued.
struct published_message {
    wire_bytes bytes;
    bool uplink;
    transmission message; ///< what its document says
};

/// What services have granted since the start.
struct service_counts {
    std::uint64_t updates = 0;
    std::uint64_t pager_hits = 0; ///< told to a client
    std::uint64_t reports = 0;
};

struct server_core {
    explicit server_core(const service_options& chosen);

    const service_options& options;                                      ///< must outlive the core
    std::function<void(const client_session&, const packet&)> on_packet; ///< may be empty

    unique_fd epoll;
    unique_fd wake; ///< other threads write to it to end a wait

    std::list<channel> channels;
    std::map<int, client_session> sessions; ///< by descriptor
    std::uint64_t clients_so_far = 0;
    std::uint64_t clients_turned_away = 0;
    std::uint64_t wrong_passwords = 0;
    access_tries tries;
    service_state services;
    service_counts counts;
    std::size_t reports_in_the_making = 0;
    memory_store memory;                   ///< keeps what is not kept elsewhere
    service_store* store = &memory;        ///< outlives the core
    std::deque<published_message> history; ///< the latest messages, oldest first
    wire_bytes tick;
    time_point started_at{};
};

/// Queues a packet for every client, admitted or not. Returns the number of clients that it was
/// queued for.
std::size_t core_broadcast(server_core& core, const packet& sent);

/// Ends a connection with a packet of `close_kind`; the client has some seconds to read it.
void core_close_client(const server_core& core, client_session& session, std::uint32_t close_kind,
                       time_point now);

/// Ends all connections so. Returns the number of clients told.
std::size_t core_close_clients(server_core& core, std::uint32_t close_kind);

/// Whether a client gets a message: its channel passes it on, and the client has not asked to leave
/// out what the ground sends.
bool core_wants(const client_session& session, const published_message& item);

/// The client that has a descriptor and a number; null if it has gone.
client_session* core_find_client(server_core& core, int fd, std::uint64_t number);

/// Whether a client has not been sent all that it is to be sent, ticks aside.
bool core_has_waiting_packets(const server_core& core);

/// The number of clients that are connected and have not been told of the end.
std::size_t core_client_count(const server_core& core);

} // namespace tovrik
