// transmission.hpp - one ACARS message as a server passes it on, and its document.
//
// Owns the record and the document's element names. Where messages come from is for others.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace sim
{

/// One message. An empty text is "not known" and leaves its element out; so does a count of 0.
struct transmission {
    std::string mode = {};           ///< one character
    std::string registration = {};   ///< for example D-AIQA
    std::string label = {};          ///< two characters
    std::string block_id = {};       ///< a digit from an aircraft, a letter from the ground
    std::string message_number = {}; ///< for example M07A
    std::string flight_number = {};  ///< for example LH0400
    std::string content = {};        ///< lines separated by line feeds, at most max_value_bytes
    std::string from = {};           ///< airport code
    std::string to = {};             ///< airport code
    std::string aircraft = {};       ///< type
    std::string operator_name = {};
    std::uint32_t contacts = 0;      ///< messages heard of this aircraft, this one included
    std::uint32_t daily_flights = 0; ///< different flights heard today
    std::time_t time = 0;            ///< seconds since the epoch, shown in UTC
};

/// The document of kinds 40 and 204: its shape is fixed, its values went through value_text.
std::string transmission_xml(const transmission& message);

/// Whether a document is that of a message from the ground, that is, whether its BlockID is a
/// letter. A client can ask to be spared these.
bool is_uplink(std::string_view xml);

} // namespace sim
