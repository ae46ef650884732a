// practice_server.hpp - a small, honest server of the client's protocol, inside this process.
//
// Owns the server's thread, and a record of what clients said. All functions but the constructor
// and destructor may be called from any thread, before, while and after the server runs.
#pragma once

#include "sim/options.hpp"
#include "sim/pager_lists.hpp"
#include "sim/reference_data.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim
{

/// One packet that a client has sent.
struct received_packet {
    std::uint64_t client; ///< 1 for the first client since the start, and so on
    std::uint32_t kind;
    std::uint16_t param1;
    std::uint16_t param2;
    std::string text; ///< the payload's bytes
};

class practice_server
{
public:
    /// Opens nothing yet. Options beyond their documented bounds are taken as the bound.
    explicit practice_server(server_options options = {});
    ~practice_server();
    practice_server(const practice_server&) = delete;
    practice_server& operator=(const practice_server&) = delete;

    /// Listens, and serves in a thread of its own, where all signals are blocked. True at once when
    /// running already; false, with the reason in error(), when the sockets cannot be had.
    bool start();

    /// Hangs up on all clients without a word and ends the thread. The record stays; start() begins
    /// afresh, with port 0 on another port.
    void stop();

    /// Why the last start() failed; empty after one that did not.
    std::string error() const;

    /// The port that the server listens on; 0 while it does not run.
    std::uint16_t port() const;

    /// The port of its directory; 0 without one and while the server does not run.
    std::uint16_t directory_port() const;

    /// Sends a document to all clients that get transmissions, after those that wait already, and
    /// keeps it for replaying. False when it does not fit a packet or the server does not run.
    bool push_transmission(std::string_view xml);

    /// Takes lines of JSON as a datagram brings them. The number of transmissions that were made of
    /// them; 0 when the server does not run.
    std::size_t push_json(std::string_view lines);

    /// The port that it takes datagrams of JSON on; 0 without one and while it does not run.
    std::uint16_t json_port() const;

    /// Broken lines of JSON since the start, those of recorded files not counted.
    std::size_t broken_json_lines() const;

    /// Sends any packet to all clients, before the transmissions that wait. The number of clients
    /// that it was queued for; too long a payload is cut.
    std::size_t push_packet(const packet& sent);

    /// Ends all connections with a packet of kind 3, 100 or 102, ahead of all that waits.
    /// The number of clients told.
    std::size_t close_clients(std::uint32_t close_kind = kind::closing);

    /// Hangs up on all clients without a word. Their number.
    std::size_t drop_clients();

    /// Clients that are connected and have not been told of the end.
    std::size_t client_count() const;

    /// Waits until client_count() is `count`; false when it is not within `limit`.
    bool wait_for_clients(std::size_t count, std::chrono::milliseconds limit);

    /// What clients have sent since the last forget_packets(), oldest first; of more than
    /// record_limit packets the latest.
    std::vector<received_packet> packets() const;

    /// Waits until clients have sent `nth` packets of `packet_kind` since the last
    /// forget_packets(). The last of these, or nothing when it does not come within `limit`.
    std::optional<received_packet> wait_for_packet(std::uint32_t packet_kind,
                                                   std::chrono::milliseconds limit,
                                                   std::size_t nth = 1);

    /// Empties the record.
    void forget_packets();

    /// What clients have added to the reference data since the start, by kind and name.
    std::vector<reference_entry> reference_entries() const;

    /// A pager list, in the order in which its entries were added.
    std::vector<pager_entry> pager_list(const std::string& address, std::uint16_t code) const;

    /// The style of the reports that are mailed to `address`; nothing without a subscription.
    std::optional<unsigned> subscription_style(const std::string& address) const;

private:
    struct implementation;
    std::unique_ptr<implementation> inside;
};

} // namespace sim
