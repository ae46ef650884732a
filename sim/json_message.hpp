// json_message.hpp - messages as today's receivers print them, one JSON object a line.
//
// Knows three forms: flat objects (VHF), and objects whose message is the "acars" member of a VDL2
// or an HFDL frame. Whatever else they hold is ignored.
#pragma once

#include "sim/transmission.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace sim
{

struct json_message {
    std::vector<transmission> parts; ///< several of a long text; none when it is no message at all
    std::string error;               ///< why the line is broken; empty: it is not
};

/// Reads one line. What is missing is empty in the parts, a time 0. Frames without a message, and
/// objects without anything of one, have no parts and no error.
json_message read_json_message(std::string_view line);

} // namespace sim
