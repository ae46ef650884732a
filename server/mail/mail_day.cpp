// mail_day.cpp - see mail_day.hpp.
#include "server/mail/mail_day.hpp"

#include "server/storage/calendar_day.hpp"

#include <cstdio>

namespace tovrik
{

std::int64_t mail_day_due(std::time_t now, unsigned at_minute)
{
    constexpr std::time_t seconds_per_minute = 60;
    return day_number(now - static_cast<std::time_t>(at_minute) * seconds_per_minute) - 1;
}

std::time_t mail_day_begin(std::int64_t day)
{
    return static_cast<std::time_t>(day * seconds_per_day);
}

std::string mail_day_text(std::int64_t day)
{
    const calendar_day date = utc_day(mail_day_begin(day));
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", date.year, date.month, date.day);
    return text;
}

} // namespace tovrik
