// day_news.cpp - see day_news.hpp.
#include "server/mail/day_news.hpp"

#include "server/base/text_fields.hpp"
#include "server/storage/report_text.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace tovrik
{
namespace
{

constexpr std::size_t max_different = 100000;
constexpr std::size_t max_rows = 10;

void count_one(heard_counts& counts, const std::string& name, const std::string& about)
{
    if (name.empty())
        return;
    auto found = counts.find(name);
    if (found == counts.end()) {
        if (counts.size() >= max_different)
            return;
        found = counts.try_emplace(name).first;
    }
    ++found->second.messages;
    if (found->second.about.empty())
        found->second.about = about;
}

/// What is known of something, with blanks between.
std::string join_known(const std::string& one, const std::string& other)
{
    return one + (one.empty() || other.empty() ? "" : "  ") + other;
}

std::string format_routing(const transmission& message)
{
    if (message.from.empty() && message.to.empty())
        return {};
    return message.from + " - " + message.to;
}

/// Those that were heard most, as a table.
void append_table(std::string& text, const char* title, const heard_counts& counts)
{
    if (counts.empty())
        return;
    std::vector<heard_counts::const_iterator> order;
    for (auto each = counts.begin(); each != counts.end(); ++each) {
        order.push_back(each);
    }
    std::ranges::stable_sort(order, [](const auto& one, const auto& other) {
        return one->second.messages > other->second.messages;
    });
    text.append("\n").append(title).append("\n");
    for (std::size_t i = 0; i < std::min(order.size(), max_rows); ++i) {
        char number[32];
        std::snprintf(number, sizeof number, "%8zu  ", order[i]->second.messages);
        text += number + join_known(order[i]->first, order[i]->second.about) + "\n";
    }
}

std::string format_hours(const std::array<std::size_t, hours_per_day>& hours)
{
    const auto* const busiest = std::ranges::max_element(hours);
    char text[96];
    std::snprintf(text, sizeof text, "Busiest hour: %02d:00 to %02d:59, ",
                  static_cast<int>(busiest - hours.begin()),
                  static_cast<int>(busiest - hours.begin()));
    return text + report_count(*busiest) + "\n";
}

} // namespace

void day_news_add(day_news& news, const transmission& message, std::time_t received)
{
    ++news.messages;
    ++news.hours.at(
        static_cast<std::size_t>(hour_number(received) - (day_number(received) * hours_per_day)));
    count_one(news.aircraft, message.registration,
              join_known(message.aircraft, message.operator_name));
    count_one(news.flights, flight_key(message.flight_number), format_routing(message));
    count_one(news.operators, message.operator_name, {});
    count_one(news.stations, message.heard.station, {});
}

std::string day_news_count(const day_news& news)
{
    return report_count(news.messages) + " of " + std::to_string(news.aircraft.size()) +
           " aircraft and " + std::to_string(news.flights.size()) +
           (news.flights.size() == 1 ? " flight" : " flights");
}

std::string day_news_text(const day_news& news)
{
    if (news.messages == 0)
        return {};
    std::string text = format_hours(news.hours);
    append_table(text, "Heard most, aircraft:", news.aircraft);
    append_table(text, "Heard most, flights:", news.flights);
    append_table(text, "Heard most, airlines:", news.operators);
    append_table(text, "Receivers:", news.stations);
    return text;
}

} // namespace tovrik
