// iso_time.hpp - points of time as some receivers write them.
#pragma once

#include <ctime>
#include <string_view>

namespace tovrik
{

/// The seconds since the epoch of a text such as "2026-01-05T10:30:00+0000", whose last part is the
/// difference from UTC in hours and minutes, or "Z" for none. 0 for a text of any other form, for a
/// day or an hour that does not exist, and for a time before the epoch.
std::time_t iso_time(std::string_view text);

} // namespace tovrik
