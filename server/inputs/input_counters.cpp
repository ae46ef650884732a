// input_counters.cpp - see input_counters.hpp.
#include "server/inputs/input_counters.hpp"

#include "server/base/time_text.hpp"
#include "server/inputs/input_limits.hpp"

namespace tovrik
{

std::string silence_notice(input_silence& silence, const std::string& name,
                           std::time_t last_message, time_point now)
{
    const bool is_silent = now - silence.since >= silence_after;
    if (is_silent == silence.is_told)
        return {};
    silence.is_told = is_silent;
    if (!is_silent)
        return "Messages from receiver '" + name + "' again";
    return "No messages from receiver '" + name + "' since " +
           (last_message == 0 ? "the start" : minute_text(last_message));
}

} // namespace tovrik
