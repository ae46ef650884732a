// calendar_day.cpp - see calendar_day.hpp.
#include "server/storage/calendar_day.hpp"

namespace tovrik
{
namespace
{

calendar_day make_day(const std::tm* time)
{
    if (time == nullptr)
        return {};
    return {.day = time->tm_mday, .month = time->tm_mon + 1, .year = time->tm_year + 1900};
}

std::int64_t count_whole(std::time_t time, std::int64_t unit)
{
    return time / unit - (time % unit < 0 ? 1 : 0);
}

} // namespace

calendar_day local_day(std::time_t time)
{
    std::tm local{};
    return make_day(localtime_r(&time, &local));
}

calendar_day utc_day(std::time_t time)
{
    std::tm utc{};
    return make_day(gmtime_r(&time, &utc));
}

std::int64_t day_number(std::time_t time)
{
    return count_whole(time, seconds_per_day);
}

std::int64_t hour_number(std::time_t time)
{
    return count_whole(time, seconds_per_hour);
}

} // namespace tovrik
