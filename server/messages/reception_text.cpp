// reception_text.cpp - see reception_text.hpp.
#include "server/messages/reception_text.hpp"

#include <cstdio>
#include <string>

namespace tovrik
{
namespace
{

std::string format_frequency(double frequency_mhz)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.3f MHz", frequency_mhz);
    return text;
}

} // namespace

void append_reception(transmission& message)
{
    const reception& heard = message.heard;
    std::string text = heard.station;
    if (heard.frequency_mhz > 0)
        text += (text.empty() ? "" : " ") + format_frequency(heard.frequency_mhz);
    if (!text.empty() && !message.content.empty())
        message.content += "\n[" + text + "]";
}

} // namespace tovrik
