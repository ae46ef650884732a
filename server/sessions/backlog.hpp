// backlog.hpp - the messages that wait for one client, and which of them it does without.
#pragma once

#include "server/base/clock.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

namespace tovrik
{

/// An encoded packet, shared by all the clients that it waits for.
using wire_bytes = std::shared_ptr<const std::string>;

struct waiting_message {
    wire_bytes bytes;
    bool has_text = true;       ///< one without is left out first
    time_point late_at = never; ///< it is left out then
};

struct backlog {
    std::deque<waiting_message> messages; ///< oldest first
    std::uint64_t left_out = 0;           ///< since the client came
};

/// Puts a message at the end. Beyond `limit`, leaves out the oldest one without a text; if all have
/// texts, the oldest one.
void backlog_add(backlog& waiting, waiting_message message, std::size_t limit);

/// Takes the first message that is not late; leaves out those before it. Null if there is none.
wire_bytes backlog_take(backlog& waiting, time_point now);

} // namespace tovrik
