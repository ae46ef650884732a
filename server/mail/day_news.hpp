// day_news.hpp - what the messages of a day come to, for those who do not want to read them all.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/calendar_day.hpp"

#include <array>
#include <cstddef>
#include <ctime>
#include <map>
#include <string>

namespace tovrik
{

/// How often something was heard, and what is known of it.
struct heard_count {
    std::size_t messages = 0;
    std::string about = {};
};

using heard_counts = std::map<std::string, heard_count>;

struct day_news {
    std::size_t messages = 0;
    std::array<std::size_t, hours_per_day> hours = {};
    heard_counts aircraft = {};
    heard_counts flights = {}; ///< by flight_key
    heard_counts operators = {};
    heard_counts stations = {};
};

/// Adds a message that was received at a moment. Beyond 100,000 different ones of a kind, further
/// ones are not counted.
void day_news_add(day_news& news, const transmission& message, std::time_t received);

/// "12 messages of 3 aircraft and 2 flights"
std::string day_news_count(const day_news& news);

/// The busiest hour, and tables of what was heard most; nothing without messages.
std::string day_news_text(const day_news& news);

} // namespace tovrik
