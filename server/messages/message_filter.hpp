// message_filter.hpp - which messages a channel passes on.
#pragma once

#include "server/messages/transmission.hpp"

#include <string>
#include <vector>

namespace tovrik
{

/// A list that is empty asks for nothing. Texts are compared without regard to case, and may hold
/// the wildcards of wildcard_match.
struct message_filter {
    std::vector<message_link> links = {};
    std::vector<std::string> stations = {};
    std::vector<std::string> labels = {};
    std::vector<std::string> airlines = {}; ///< codes at the beginning of flight numbers
    std::vector<std::string> registrations = {};
    bool no_empty = false; ///< messages without a text are left out
    bool operator==(const message_filter&) const = default;
};

/// Whether a message is all that the filter asks for.
bool filter_matches(const message_filter& filter, const transmission& message);

} // namespace tovrik
