// message_filter.cpp - see message_filter.hpp.
#include "server/messages/message_filter.hpp"

#include "server/base/text_fields.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

bool matches_any(const std::vector<std::string>& patterns, const std::string& text)
{
    return patterns.empty() || std::ranges::any_of(patterns, [&text](const std::string& pattern) {
               return wildcard_match(pattern, text);
           });
}

bool matches_airline(const std::vector<std::string>& codes, const std::string& flight_number)
{
    return codes.empty() || std::ranges::any_of(codes, [&flight_number](const std::string& code) {
               return flight_number.size() > code.size() && is_digit(flight_number[code.size()]) &&
                      upper_case(flight_number.substr(0, code.size())) == upper_case(code);
           });
}

} // namespace

bool filter_matches(const message_filter& filter, const transmission& message)
{
    const bool is_linked =
        filter.links.empty() ||
        std::ranges::find(filter.links, message.heard.link) != filter.links.end();
    return is_linked && matches_any(filter.stations, message.heard.station) &&
           matches_any(filter.labels, message.label) &&
           matches_airline(filter.airlines, message.flight_number) &&
           matches_any(filter.registrations, message.registration) &&
           !(filter.no_empty && message.content.empty());
}

} // namespace tovrik
