// practice_server.hpp - a small, honest server of the client's protocol, inside this process.
//
// Owns the server's thread and a record of what clients sent. All functions but the constructor and
// destructor may be called from any thread, whether the server runs or not.
#pragma once

#include "server/practice/options.hpp"
#include "server/storage/pager_lists.hpp"
#include "server/storage/reference_data.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// One packet that a client has sent.
struct received_packet {
    std::uint64_t client; ///< 1 for the first client since the start, and so on
    std::uint32_t kind;
    std::uint16_t param1;
    std::uint16_t param2;
    std::string text; ///< the payload's bytes
};

/// How a stream of JSON has ended.
struct json_end {
    std::size_t broken_lines; ///< of the stream
    std::string error;        ///< why a read failed; empty if none did
};

class practice_server
{
public:
    /// Opens nothing yet. An option beyond its documented bound counts as the bound.
    explicit practice_server(server_options options = {});
    ~practice_server();
    practice_server(const practice_server&) = delete;
    practice_server& operator=(const practice_server&) = delete;

    /// Listens, and serves in a thread of its own, in which all signals are blocked. True at once
    /// if the server is already running; false, with the reason in error(), if it cannot start.
    bool start();

    /// Says good-bye to all clients and accepts no more. They have some seconds to read it: the
    /// pace and closing_grace_ms at most. Follow it with stop() when is_alone() or when nobody
    /// waits.
    void leave();

    /// Whether no client is connected, told of the end or not.
    bool is_alone() const;

    /// Closes all connections without a packet and ends the thread. The record is kept, all else is
    /// forgotten. With port 0 in the options, the next start() may choose another port.
    void stop();

    /// Why the last start() failed; empty if it did not.
    std::string error() const;

    /// The port that the server listens on; 0 while it is not running.
    std::uint16_t port() const;

    /// The port of its directory; 0 without a directory and while the server is not running.
    std::uint16_t directory_port() const;

    /// Queues a document for all admitted clients, after the transmissions that wait, and keeps it
    /// for replay. False if it does not fit a packet or the server is not running.
    bool push_transmission(std::string_view xml);

    /// Takes lines of JSON as if a datagram brought them. Returns the number of transmissions that
    /// they gave; 0 if the server is not running.
    std::size_t push_json(std::string_view lines);

    /// The port on which it receives JSON; 0 without such a port and while it is not running.
    std::uint16_t json_port() const;

    /// The number of broken lines of JSON since the start, without those of recorded files.
    std::size_t broken_json_lines() const;

    /// How the stream of JSON has ended; nothing if there is none, or if more may come.
    std::optional<json_end> json_stream_end() const;

    /// Whether a client has not been sent all that it is to be sent, ticks aside.
    bool has_waiting_packets() const;

    /// Queues any packet for all clients, before the transmissions that wait. A payload that is too
    /// long is cut. Returns the number of clients that it was queued for.
    std::size_t push_packet(const packet& sent);

    /// Ends all connections with a packet of kind 3, 100 or 102; packets that wait are dropped.
    /// Returns the number of clients that are told.
    std::size_t close_clients(std::uint32_t close_kind = kind::closing);

    /// Closes all connections without a packet. Returns their number.
    std::size_t drop_clients();

    /// The number of clients that are connected and have not been told of the end.
    std::size_t client_count() const;

    /// Waits until client_count() is `count`. False if that does not happen within `limit`.
    bool wait_for_clients(std::size_t count, std::chrono::milliseconds limit);

    /// What clients have sent since the last forget_packets(), oldest first; at most the latest
    /// record_limit packets.
    std::vector<received_packet> packets() const;

    /// Waits until clients have sent `nth` packets of `packet_kind` since the last
    /// forget_packets(). Returns the last of these; nothing if it does not come within `limit`.
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

} // namespace tovrik
