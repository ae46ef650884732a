// doubles.hpp - makes one message of those that several receivers or frequencies heard.
//
// Messages are doubles of each other if registration, label, block, message number and text are
// the same, but for blanks and line feeds at the text's end, and if they come within double_window
// of the first one. The strongest of them is passed on. To know it, a message is held back for
// double_hold_back after the first one came; a later double is dropped, however strong. With only
// one input there is nothing to wait for: then the first one is passed on at once.
//
// Comes before joining (joining.hpp), which wants each block once. Reads no clock.
#pragma once

#include "server/base/clock.hpp"
#include "server/messages/transmission.hpp"

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tovrik
{

constexpr std::chrono::seconds double_window{8};
constexpr std::chrono::seconds double_hold_back{2};

/// Maximum number of messages that are remembered, and of the bytes by which they are known. When
/// there would be more, the oldest is passed on, if it is still held back, and forgotten.
constexpr std::size_t max_remembered_messages = 65536;
constexpr std::size_t max_remembered_bytes = std::size_t{16} * 1024 * 1024;

/// A message that has been heard.
struct heard_message {
    std::string key;                  ///< all by which doubles are known
    std::optional<transmission> held; ///< the strongest so far; none once it is passed on
    time_point release_at;            ///< when it is passed on
    time_point forget_at;
};

struct doubles {
    std::list<heard_message> remembered; ///< in the order in which they came
    /// Their keys, which point into the list.
    std::unordered_map<std::string_view, std::list<heard_message>::iterator> places;
    std::list<heard_message>::iterator first_held = remembered.end();
    std::size_t remembered_bytes = 0;
    std::uint64_t merged = 0; ///< receptions that were merged into others

    doubles() = default;
    doubles(const doubles&) = delete; ///< `places` and `first_held` point into the record
    doubles& operator=(const doubles&) = delete;
};

/// Takes messages in the order in which they came at `now`. `hold_back`: whether to wait for
/// stronger doubles. Returns what can be passed on by now: earlier messages first.
std::vector<transmission> doubles_take(doubles& known, std::vector<transmission> messages,
                                       bool hold_back, time_point now);

/// Returns the messages that have been held back long enough.
std::vector<transmission> doubles_on_time(doubles& known, time_point now);

/// Returns all messages that are held back, and forgets everything but the counter.
std::vector<transmission> doubles_end(doubles& known);

/// When doubles_on_time has something to return; `never` if nothing is held back.
time_point doubles_next_time(const doubles& known);

} // namespace tovrik
