// time_text.hpp - moments as people read them.
#pragma once

#include <ctime>
#include <string>

namespace tovrik
{

/// The hour and minute of a moment in UTC, as "20:15"; empty if the system has no date for it.
std::string minute_text(std::time_t time);

} // namespace tovrik
