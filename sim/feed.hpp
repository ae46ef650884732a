// feed.hpp - where a server's transmissions come from, and the latest of them.
//
// Owns the generator or the recorded documents, and the history that new clients get replayed.
#pragma once

#include "sim/client_session.hpp"
#include "sim/options.hpp"
#include "sim/traffic_generator.hpp"

#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace sim
{

/// A transmission ready to be queued.
struct feed_item {
    wire_bytes bytes;
    bool uplink;
};

class feed
{
public:
    /// With a replay count the feed begins with that many transmissions in its history, the latest
    /// a minute old. `options` must outlive the feed.
    explicit feed(const server_options& options);

    /// The next transmission of its own. Nothing when it does not fit a packet.
    std::optional<feed_item> next();

    /// Makes an item of a document and remembers it. Nothing when it does not fit a packet.
    std::optional<feed_item> add(std::string_view xml);

    /// The latest transmissions, oldest first; replay_count at most.
    const std::deque<feed_item>& history() const;

private:
    std::string next_document(std::time_t now);

    const server_options& options;
    traffic_generator generator;
    std::size_t next_recorded = 0; ///< index into the recorded documents
    std::deque<feed_item> latest;
};

} // namespace sim
