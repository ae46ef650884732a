// message_archive.cpp - see message_archive.hpp.
#include "server/storage/message_archive.hpp"

#include "server/base/limits.hpp"
#include "server/storage/report_text.hpp"

#include <vector>

namespace tovrik
{

void message_archive::add(const transmission& message, std::time_t now,
                          const reference_data& reference)
{
    messages.push_back({local_day(now), message.time != 0 ? utc_day(message.time) : calendar_day{},
                        report_message(message, reference)});
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
    std::string text = report_title(day, server_name) + "\n";
    text += report_count(count);
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
