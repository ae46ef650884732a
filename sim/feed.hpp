// feed.hpp - where a server's transmissions come from, and the latest of them.
//
// Owns the generator and the history that is replayed to new clients.
#pragma once

#include "sim/client_session.hpp"
#include "sim/options.hpp"
#include "sim/reference_data.hpp"
#include "sim/traffic_generator.hpp"

#include <deque>
#include <optional>
#include <string>

namespace sim
{

/// A transmission that is ready to be queued.
struct feed_item {
    wire_bytes bytes;
    bool uplink;
    transmission message; ///< what its document says
};

class feed
{
public:
    /// With a replay count the feed begins with that many transmissions in its history, the latest
    /// a minute old. Both arguments must outlive the feed. Entries that are added to `reference`
    /// later are used in the messages that follow, but not in whole documents.
    feed(const server_options& options, const reference_data& reference);

    /// The feed's own next transmission. Nothing if it does not fit a packet.
    std::optional<feed_item> next();

    /// Makes an item of a document and remembers it. Nothing if it does not fit a packet.
    std::optional<feed_item> add(const std::string& xml);

    /// Completes a message with the reference data, and with the present time if it has none; then
    /// makes an item of it and remembers it. Nothing if it does not fit a packet.
    std::optional<feed_item> add(transmission message);

    /// The latest transmissions, oldest first; at most replay_count of them.
    const std::deque<feed_item>& history() const;

private:
    std::optional<feed_item> make_next(std::time_t now);
    std::size_t take_turn(std::size_t count);
    transmission generate(std::time_t now);
    std::optional<feed_item> remember(const std::string& xml, transmission message);

    const server_options& options;
    const reference_data& reference;
    traffic_generator generator;
    std::size_t next_recorded = 0;   ///< index into the recorded documents or messages
    std::size_t since_featured = 0;  ///< messages since the last one about an added entry
    std::size_t featured_so_far = 0; ///< messages about added entries
    std::deque<feed_item> latest;
};

} // namespace sim
