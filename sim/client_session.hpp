// client_session.hpp - one client's connection: its bytes in, its packets out, one at a time.
//
// Owns the socket, the receive buffer and the packets that wait. Knows the pace, but not what
// packets mean; when to call is the loop's business.
#pragma once

#include "data/owners.hpp"
#include "sim/clock.hpp"
#include "sim/packet.hpp"
#include "sim/pager_lists.hpp"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sim
{

/// An encoded packet, shared by all the clients that it waits for.
using wire_bytes = std::shared_ptr<const std::string>;

/// The packet, encoded once for all of them.
wire_bytes encode_shared(const packet& sent);

struct client_session {
    client_session(int socket_fd, std::uint64_t client_number);

    unique_fd socket;
    std::uint64_t number; ///< 1 for the first client since the start, and so on

    std::string input; ///< received and not yet taken; bounded by what is read in a turn

    // Going out. Assured packets go before all others and are never dropped for newer ones; tick,
    // report and traffic take turns.
    std::deque<wire_bytes> assured;
    wire_bytes tick;               ///< none: no tick is due
    std::deque<wire_bytes> report; ///< the pieces of the report under way
    std::deque<wire_bytes> traffic;
    wire_bytes sending;             ///< under way, none between packets
    std::size_t sent_bytes = 0;     ///< of `sending`
    unsigned next_turn = 0;         ///< whose turn it is among those that take turns
    bool waiting_to_write = false;  ///< the socket took no more: send on when it is writable
    bool watched_for_write = false; ///< kept by the loop: what the socket is watched for
    time_point next_send{};         ///< not before this

    // What the client has shown and asked for.
    bool identified = false;
    bool authenticated = false;
    bool admitted = false; ///< gets transmissions
    bool wants_uplinks = true;
    std::vector<pager_owner> pager_owners; ///< whose pager lists it has shown to know
    std::size_t changes = 0;               ///< entries that it has added to what services keep

    // Its end.
    time_point next_tick = never;
    time_point close_at = never; ///< when it is told of the end
    time_point drop_at = never;  ///< when it is hung up on, having been told
    bool closing = false;        ///< was told; nothing that it says counts any more
    bool gone = false;           ///< to be removed
};

/// What a client has sent, taken from its input.
enum class packet_taken { none, whole, broken };

/// Reads what the socket has, at most max_read_bytes_a_turn. Marks the session as gone at the end
/// of the stream and on errors.
void session_receive(client_session& session);

/// Moves the first packet of the input to `taken`. Broken: the header announces more than
/// max_payload_bytes; the stream makes no sense from there on.
packet_taken session_take_packet(client_session& session, packet& taken);

/// Puts a packet behind the assured ones. False, and nothing queued, when max_assured_packets wait
/// or the client is being closed.
bool session_queue(client_session& session, wire_bytes bytes);

/// session_queue of the encoded packet.
bool session_queue_packet(client_session& session, const packet& sent);

/// Puts a transmission behind the others and drops the oldest beyond `limit`.
void session_queue_transmission(client_session& session, wire_bytes bytes, std::size_t limit);

/// Forgets all that waits and ends the connection with `last_packet`: the client may then hang up,
/// and is hung up on at `drop_at`. Does nothing on a session that is closing already.
void session_close(client_session& session, wire_bytes last_packet, time_point drop_at);

/// Sends what is due: at most one packet for every `pace` that has passed, each in one piece while
/// the socket has room. Marks the session as gone on errors.
void session_send(client_session& session, time_point now, std::chrono::milliseconds pace);

/// When session_send has something to do next; never, when only an event can tell.
time_point session_send_time(const client_session& session);

} // namespace sim
