// transmission.hpp - one ACARS message as a server passes it on, and its document.
//
// Owns the record and the document's element names. Messages come from elsewhere.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace tovrik
{

/// The kind of link that a message was heard on.
enum class message_link { unknown, vhf, vdl2, hfdl, iridium, inmarsat };

/// How a receiver heard a message. Documents and clients do not know these by themselves.
struct reception {
    message_link link = message_link::unknown;
    std::string station = {}; ///< the receiver's name for itself; empty: not known
    double frequency_mhz = 0; ///< 0: not known
    double level_db = -999;   ///< relative to anything; only compared. -999: not known
    bool continues = false;   ///< the receiver says that another block of this message follows
};

/// One message. An empty text or a count of 0 means "not known", and its element is left out.
struct transmission {
    std::string mode = {};           ///< one character
    std::string registration = {};   ///< for example D-AIQA
    std::string label = {};          ///< two characters
    std::string block_id = {};       ///< a digit from an aircraft, a letter from the ground
    std::string message_number = {}; ///< for example M07A
    std::string flight_number = {};  ///< for example LH0400
    /// Lines separated by line feeds; at most max_value_bytes when it is passed on.
    std::string content = {};
    std::string from = {};     ///< airport code
    std::string to = {};       ///< airport code
    std::string aircraft = {}; ///< its type
    std::string operator_name = {};
    std::uint32_t contacts = 0;      ///< messages heard of this aircraft, including this one
    std::uint32_t daily_flights = 0; ///< different flights heard today
    std::time_t time = 0;            ///< seconds since the epoch, shown in UTC
    reception heard = {};
};

/// The document of kinds 40 and 204. Its shape is fixed; its values have passed value_text.
std::string transmission_xml(const transmission& message);

/// Whether a document holds a message from the ground: its BlockID is a letter. A client can ask
/// the server to leave these out.
bool is_uplink(std::string_view xml);

} // namespace tovrik
