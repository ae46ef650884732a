// mail_day.hpp - which day the mails are about.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace tovrik
{

/// The number (see day_number) of the latest day whose mails are due at a moment: they go out
/// `at_minute` minutes, 0 to 1439, after its end. All days are those of UTC.
std::int64_t mail_day_due(std::time_t now, unsigned at_minute);

/// The first second of a day.
std::time_t mail_day_begin(std::int64_t day);

/// A day as people write it: "2026-01-05".
std::string mail_day_text(std::int64_t day);

} // namespace tovrik
