// read_transmission.hpp - reads a message back from its document.
#pragma once

#include "server/messages/transmission.hpp"

#include <string>

namespace tovrik
{

/// What a document says, as a client would read it. A missing text is empty. The time is 0 if the
/// date is missing or impossible.
transmission read_transmission(const std::string& xml);

} // namespace tovrik
