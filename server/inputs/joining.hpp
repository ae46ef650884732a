// joining.hpp - makes one message of its blocks.
//
// How ids are read. An aircraft numbers its blocks with a digit that goes round from 9 to 0, the
// ground with a letter that goes round from Z to A: these are the block ids, and the next block of
// a message has the next one. The message number has three characters, "M07", and in most forms a
// fourth, a letter that tells the blocks of one message apart: "M07A", "M07B". So blocks belong
// together if link, registration, label and the first three characters of the message number are
// the same, and each is the next one in its block id and, where both have one, in its letter.
//
// Only a block of which its receiver says that another follows (`heard.continues`) is held back.
// What follows is appended to its text; all else stays as in the first block. The message is
// passed on when its last block has come; with what there is when a block is missing (one with a
// later id comes), after join_patience without the next block, and when it gets too long. Then
// `heard.continues` stays true. A block that comes again while its message waits is left out.
//
// Comes after doubles (doubles.hpp). Reads no clock.
#pragma once

#include "server/base/clock.hpp"
#include "server/messages/transmission.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace tovrik
{

constexpr std::chrono::seconds join_patience{30};

/// Maximum number of messages that wait for their next block; beyond it the oldest is passed on.
constexpr std::size_t max_unfinished_messages = 1000;

/// Maximum length of a joined text; a block that would make it longer is taken for the beginning of
/// another message.
constexpr std::size_t max_joined_bytes = 65536;

/// A message whose next block has not come yet.
struct unfinished_message {
    transmission message;
    char last_id = '\0';       ///< of its latest block
    char last_letter = '\0';   ///< of its latest block; NUL: it has none
    std::size_t last_size = 0; ///< of its latest block's text
    time_point give_up_at = never;
};

struct joining {
    std::deque<unfinished_message> waiting; ///< in the order in which they give up
    std::uint64_t joined = 0;               ///< blocks that were appended to others
};

/// Takes messages in the order in which they came at `now`. Returns what can be passed on by now.
std::vector<transmission> joining_take(joining& state, std::vector<transmission> messages,
                                       time_point now);

/// Returns the messages that have waited long enough.
std::vector<transmission> joining_on_time(joining& state, time_point now);

/// Returns all messages that wait.
std::vector<transmission> joining_end(joining& state);

/// When joining_on_time has something to return; `never` if no message waits.
time_point joining_next_time(const joining& state);

} // namespace tovrik
