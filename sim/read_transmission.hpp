// read_transmission.hpp - a message back from its document, whoever wrote that.
#pragma once

#include "sim/transmission.hpp"

#include <string>

namespace sim
{

/// What a document says, as a client would read it. What it does not say is empty; so is the time,
/// 0, when the date is missing or makes no sense.
transmission read_transmission(const std::string& xml);

} // namespace sim
