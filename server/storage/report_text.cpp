// report_text.cpp - see report_text.hpp.
#include "server/storage/report_text.hpp"

#include "server/base/text_fields.hpp"
#include "server/storage/reference_use.hpp"

#include <cstdio>
#include <string_view>

namespace tovrik
{
namespace
{

constexpr std::string_view indent = "       ";

std::string format_day(calendar_day day)
{
    char text[40];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d", day.day, day.month, day.year);
    return text;
}

std::string format_time(std::time_t time)
{
    std::tm utc{};
    if (time == 0 || gmtime_r(&time, &utc) == nullptr)
        return "--:--";
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d", utc.tm_hour, utc.tm_min);
    return text;
}

void append_named(std::string& line, const char* name, const std::string& value)
{
    if (!value.empty())
        line.append(line.empty() ? "" : "  ").append(name).append(value);
}

std::string format_routing(const transmission& message, const reference_data& reference)
{
    if (message.from.empty() && message.to.empty())
        return {};
    return airport_text(message.from, reference) + " - " + airport_text(message.to, reference);
}

/// Adds lines below, unless there are none.
void append_filled(std::string& text, std::string_view lines)
{
    if (lines.empty())
        return;
    for (const std::string_view line : split_fields(lines, '\n')) {
        text.append("\n").append(indent).append(line);
    }
}

} // namespace

std::string report_title(calendar_day day, const std::string& server_name)
{
    return "Messages of " + format_day(day) + " from " + server_name;
}

std::string report_count(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " message" : " messages");
}

std::string report_message(const transmission& message, const reference_data& reference)
{
    std::string text = format_time(message.time);
    append_named(text, "", message.registration);
    append_named(text, "", message.aircraft);
    append_named(text, "", message.operator_name);
    std::string line;
    append_named(line, "Flight ", message.flight_number);
    append_named(line, "", format_routing(message, reference));
    append_filled(text, line);
    line.clear();
    append_named(line, "Mode ", message.mode);
    append_named(line, "Label ", message.label);
    append_named(line, "Block ", message.block_id);
    append_named(line, "Message ", message.message_number);
    append_filled(text, line);
    append_filled(text, message.content);
    return text += "\n\n";
}

} // namespace tovrik
