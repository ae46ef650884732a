// message_archive.cpp - see message_archive.hpp.
#include "server/storage/message_archive.hpp"

#include "server/base/limits.hpp"
#include "server/storage/reference_use.hpp"

#include <cstdio>
#include <string_view>
#include <vector>

namespace tovrik
{
namespace
{

constexpr std::string_view indent = "       ";

calendar_day make_day(const std::tm* time)
{
    if (time == nullptr)
        return {};
    return {.day = time->tm_mday, .month = time->tm_mon + 1, .year = time->tm_year + 1900};
}

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

std::string indent_lines(const std::string& content)
{
    std::string text{indent};
    for (const char c : content) {
        text += c;
        if (c == '\n')
            text += indent;
    }
    return text;
}

std::string format_message(const transmission& message, const reference_data& reference)
{
    std::string text = format_time(message.time);
    append_named(text, "", message.registration);
    append_named(text, "", message.aircraft);
    append_named(text, "", message.operator_name);
    std::string flight;
    append_named(flight, "Flight ", message.flight_number);
    append_named(flight, "", format_routing(message, reference));
    std::string frame;
    append_named(frame, "Mode ", message.mode);
    append_named(frame, "Label ", message.label);
    append_named(frame, "Block ", message.block_id);
    append_named(frame, "Message ", message.message_number);
    for (const std::string& line : {flight, frame}) {
        if (!line.empty())
            text.append("\n").append(indent).append(line);
    }
    if (!message.content.empty())
        text += "\n" + indent_lines(message.content);
    return text += "\n\n";
}

std::string format_count(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " message" : " messages");
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

void message_archive::add(const transmission& message, std::time_t now,
                          const reference_data& reference)
{
    messages.push_back({local_day(now), message.time != 0 ? utc_day(message.time) : calendar_day{},
                        format_message(message, reference)});
    total_bytes += messages.back().text.size();
    while (messages.size() > max_archived_messages || total_bytes > max_archived_bytes) {
        total_bytes -= messages.front().text.size();
        messages.pop_front();
    }
}

std::string message_archive::report_of(calendar_day day, const std::string& server_name) const
{
    std::size_t count = 0;
    std::size_t bytes = 0;
    std::vector<const archived_message*> latest;
    for (auto at = messages.rbegin(); at != messages.rend(); ++at) {
        if (at->sent != day && at->dated != day)
            continue;
        ++count;
        bytes += at->text.size();
        if (bytes <= max_report_bytes)
            latest.push_back(&*at);
    }
    if (count == 0 || day.day == 0)
        return {};
    std::string text = "Messages of " + format_day(day) + " from " + server_name + "\n";
    text += format_count(count);
    if (latest.size() < count)
        text += ", of which the latest " + std::to_string(latest.size()) + " are shown";
    text += ". Times are UTC.\n\n";
    for (auto at = latest.rbegin(); at != latest.rend(); ++at) {
        text += (*at)->text;
    }
    return text;
}

std::size_t message_archive::size() const
{
    return messages.size();
}

} // namespace tovrik
