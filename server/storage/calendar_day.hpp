// calendar_day.hpp - the days of moments.
#pragma once

#include <cstdint>
#include <ctime>

namespace tovrik
{

constexpr std::int64_t seconds_per_hour = 3600;
constexpr std::int64_t hours_per_day = 24;
constexpr std::int64_t seconds_per_day = hours_per_day * seconds_per_hour;

struct calendar_day {
    int day = 0;   ///< 1 to 31
    int month = 0; ///< 1 to 12
    int year = 0;
    bool operator==(const calendar_day&) const = default;
};

/// The day of a moment in this machine's time zone; its `day` is 0 if the system has no date for
/// it.
calendar_day local_day(std::time_t time);

/// The day of a moment in UTC, as messages are dated.
calendar_day utc_day(std::time_t time);

/// The number of a moment's day in UTC, counted from 1 January 1970; earlier ones are negative.
std::int64_t day_number(std::time_t time);

/// The same for its hour.
std::int64_t hour_number(std::time_t time);

} // namespace tovrik
