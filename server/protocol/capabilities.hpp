// capabilities.hpp - what a server tells about itself in its first message.
//
// Owns the element names and their order. What a client makes of them is not decided here.
#pragma once

#include <optional>
#include <string>

namespace tovrik
{

/// One text for each element, sent as it stands; an element without a text is left out. For clients
/// an empty text means the same. They count a service as offered when its number is not 0, and CRC
/// checking when its text is not empty.
struct capability_texts {
    std::optional<std::string> version = "1.00.000";
    std::optional<std::string> server_uuid = {}; ///< none: made of the server's address and port
    std::optional<std::string> crc_check = {};
    std::optional<std::string> mailing = "0";
    std::optional<std::string> db_modify = "0";
    std::optional<std::string> modify_flags = "0";
    std::optional<std::string> reports = "0";
    std::optional<std::string> pager = "0";
    std::optional<std::string> need_auth = {}; ///< none: the server says 1 with a password, else 0
};

/// Whether clients will count a service as offered.
bool offers_updates(const capability_texts& texts);
bool offers_mailings(const capability_texts& texts);
bool offers_reports(const capability_texts& texts);
bool offers_pagers(const capability_texts& texts);

/// The document of kind 41.
std::string capabilities_xml(const capability_texts& texts);

} // namespace tovrik
