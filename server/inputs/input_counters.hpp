// input_counters.hpp - what an input has received, and its silence.
#pragma once

#include "server/base/clock.hpp"

#include <cstdint>
#include <ctime>
#include <string>

namespace tovrik
{

struct input_counters {
    std::uint64_t messages = 0;      ///< as they came: before joining, doubles included
    std::uint64_t bytes = 0;         ///< from senders that are allowed
    std::uint64_t broken = 0;        ///< lines that were no message
    std::uint64_t refused = 0;       ///< datagrams and connections of senders that are not allowed,
                                     ///< and connections beyond max_senders
    std::uint64_t lost = 0;          ///< blocks that the system or a full queue dropped
    std::uint64_t reconnections = 0; ///< connections after the first one
    std::uint64_t left_out = 0;      ///< empty squitters, by option; `messages` counts them too
    bool is_connected = false;       ///< there is a connection; or, where senders come, it is open
    std::time_t last_message = 0;    ///< seconds since the epoch; 0: none yet
};

/// Whether an input is silent, and what has been told of it.
struct input_silence {
    time_point since{};   ///< of the latest message, or of the start
    bool is_told = false; ///< clients know that it is silent
};

/// What clients are to be told now, once: that the receiver has been silent for silence_after, or
/// that messages come again. Empty if there is nothing to tell. `name` is the receiver's;
/// `last_message` is 0 if there has been none.
std::string silence_notice(input_silence& silence, const std::string& name,
                           std::time_t last_message, time_point now);

} // namespace tovrik
