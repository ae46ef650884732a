// json_message.hpp - messages as today's receivers print them, one JSON object per line.
//
// Knows five forms: flat objects (VHF), the "acars" member of a VDL2 or an HFDL frame, the "acars"
// member beside a "source" (Iridium), and the "acars" member of an "isu" (Inmarsat). All other
// members are ignored.
#pragma once

#include "server/messages/transmission.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// A line's message as it was heard.
struct json_whole {
    std::optional<transmission> message; ///< its content may be longer than clients can carry
    std::string error;                   ///< why the line is broken; empty if it is not
};

/// A line's message as it is passed on.
struct json_message {
    std::vector<transmission> parts; ///< several for a long text; none if the line has no message
    std::string error;               ///< why the line is broken; empty if it is not
};

/// Reads one line. A missing text is empty and a missing time is 0. A frame without a message, and
/// an object with none of a message's members, give no message and no error. A line is broken that
/// is longer than max_json_line_bytes or nested deeper than max_json_depth.
json_whole read_json_whole(std::string_view line);

/// The same in parts as message_parts makes them.
json_message read_json_message(std::string_view line);

/// A message in parts whose content clients can carry; those after the first begin with their
/// number, as numbered_parts says. All else is the same in each.
std::vector<transmission> message_parts(transmission message);

/// Whether a message is an empty squitter of a ground station, which only says that the station is
/// there. Read as: its label is "SQ", its content is blank, and its block id is no digit. A digit
/// would come from an aircraft; squitters have a letter or none.
bool is_empty_squitter(const transmission& message);

} // namespace tovrik
