// client_session.hpp - one client's connection: its bytes in, its packets out, one at a time.
//
// Owns the socket, the receive buffer and the packets that wait. Knows the pace, but not what
// packets mean. The server's loop decides when to call.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/protocol/packet.hpp"
#include "server/sessions/backlog.hpp"
#include "server/sessions/channel.hpp"
#include "server/storage/pager_lists.hpp"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tovrik
{

/// Encodes a packet once for all clients.
wire_bytes encode_shared(const packet& sent);

/// What a pager list has met while clients of its owner are there: all of them are told at once. It
/// waits for the next one if none of them can be.
struct shared_hit {
    pager_owner owner;
    std::time_t moment = 0;
    std::string text = {};
    std::size_t untold = 0; ///< clients that are still to be told
    bool is_told = false;   ///< one of them has been
};

/// A hit of pager lists, for one client of their owner.
struct offered_hit {
    std::vector<std::shared_ptr<shared_hit>> of_lists = {}; ///< empty: it is a waiting one,
    pager_owner owner = {};                                 ///< of this owner
    std::int64_t id = 0;                                    ///< and with this number
    wire_bytes bytes = {};                                  ///< null: it is on its way
    bool is_handed_over = false;                            ///< the system has all of it
};

struct client_session {
    client_session(int socket_fd, channel& connected_to, std::uint64_t client_number);

    unique_fd socket;
    channel* home;             ///< outlives the session
    std::uint32_t address = 0; ///< IPv4, as the system gives it
    std::uint64_t number; ///< 1 for the first client since the start, and so on; 0: turned away

    std::string input; ///< received but not yet taken; bounded by what is read in a turn

    // Output. Assured packets go before all others, and newer ones never push them out. Tick,
    // report, traffic and hits of pager lists take turns.
    std::deque<wire_bytes> assured;
    wire_bytes tick;               ///< null: no tick is due
    std::deque<wire_bytes> report; ///< the announcements and pieces of the report under way
    backlog traffic;
    std::optional<offered_hit> hit;   ///< the next one, until the server knows what became of it
    std::deque<offered_hit> new_hits; ///< to be told at once, oldest first
    wire_bytes sending;               ///< the packet under way; null between packets
    std::size_t sent_bytes = 0;       ///< of `sending`
    unsigned next_turn = 0;           ///< index of the queue whose turn it is
    bool waiting_to_write = false;    ///< the socket is full; sending resumes when it is writable
    time_point stalled_since = never; ///< it has taken nothing since then, and the socket is full
    bool watched_for_write = false;   ///< the loop watches for that, and sets this
    time_point next_send{};           ///< nothing is sent before this

    // What the client has shown and asked for.
    bool identified = false;
    bool authenticated = false;
    std::string label;     ///< of its password
    bool admitted = false; ///< gets transmissions
    bool wants_uplinks = true;
    std::vector<pager_owner> pager_owners; ///< owners of the pager lists that the client has used
    bool is_report_made = false;           ///< it has asked for one that is not ready yet
    std::size_t changes = 0;               ///< entries that it has added to what services keep
    std::size_t unanswered_requests = 0;   ///< that wait for the database

    // Its end.
    time_point next_tick = never;
    time_point tell_left_out_at = never; ///< how many messages were left out
    std::uint64_t left_out_told = 0;
    time_point close_at = never;  ///< it is told of the end then
    time_point access_by = never; ///< it is told of the end then, if it is not admitted
    time_point drop_at = never;   ///< its connection is closed then, if it is still open
    bool closing = false;         ///< it has been told; nothing that it says counts any more
    bool gone = false;            ///< to be removed
};

/// What session_take_packet found in the input.
enum class packet_taken { none, whole, broken };

/// Reads what the socket has, at most max_read_bytes_per_turn. Marks the session as gone at the end
/// of the stream and on errors.
void session_receive(client_session& session);

/// Moves the first packet of the input to `taken`. Broken: the header announces more than
/// max_payload_bytes, and nothing after it can be understood.
packet_taken session_take_packet(client_session& session, packet& taken);

/// Puts a packet after the assured ones. False, and nothing queued, when max_assured_packets wait
/// or the client is being closed.
bool session_queue(client_session& session, wire_bytes bytes);

/// Encodes the packet and calls session_queue.
bool session_queue_packet(client_session& session, const packet& sent);

/// Puts a message after those that wait; see backlog_add for those beyond `limit`.
void session_queue_transmission(client_session& session, waiting_message message,
                                std::size_t limit);

/// Drops all packets that wait and ends the connection with `last_packet`. The client may then
/// close the connection; if it does not, the server closes it at `drop_at`. Does nothing to a
/// session that is closing already.
void session_close(client_session& session, wire_bytes last_packet, time_point drop_at);

/// Sends what is due: at most one packet for every `pace` that has passed. Each is handed over in
/// one piece if the socket can take it. Marks the session as gone on errors, and when the socket
/// has taken nothing for max_stalled_minutes.
void session_send(client_session& session, time_point now, std::chrono::milliseconds pace);

/// When session_send has something to do next; `never` if only an event can tell.
time_point session_send_time(const client_session& session);

/// When a client whose socket is full loses its place; `never` while it takes something.
time_point session_stall_end(const client_session& session);

} // namespace tovrik
