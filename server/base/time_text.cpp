// time_text.cpp - see time_text.hpp.
#include "server/base/time_text.hpp"

namespace tovrik
{

std::string minute_text(std::time_t time)
{
    std::tm utc{};
    char text[16] = "";
    if (gmtime_r(&time, &utc) != nullptr)
        std::strftime(text, sizeof text, "%H:%M", &utc);
    return text;
}

} // namespace tovrik
