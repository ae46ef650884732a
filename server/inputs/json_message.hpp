// json_message.hpp - messages as today's receivers print them, one JSON object per line.
//
// Knows three forms: flat objects (VHF), and the "acars" member of a VDL2 or an HFDL frame. All
// other members are ignored.
#pragma once

#include "server/messages/transmission.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

struct json_message {
    std::vector<transmission> parts; ///< several for a long text; none if the line has no message
    std::string error;               ///< why the line is broken; empty if it is not
};

/// Reads one line. In the parts a missing text is empty and a missing time is 0. A frame without a
/// message, and an object with none of a message's members, give no parts and no error.
json_message read_json_message(std::string_view line);

} // namespace tovrik
