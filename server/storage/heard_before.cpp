// heard_before.cpp - see heard_before.hpp.
#include "server/storage/heard_before.hpp"

#include "server/base/text_fields.hpp"
#include "server/storage/calendar_day.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

void add_contact(heard_before& heard, transmission& message)
{
    const bool has_room = heard.contacts.size() < max_heard_aircraft;
    if (message.registration.empty() ||
        (!has_room && !heard.contacts.contains(message.registration)))
        return;
    message.contacts = ++heard.contacts[message.registration];
}

void add_flight(heard_before& heard, transmission& message, std::time_t now)
{
    const std::int64_t today = day_number(now);
    if (heard.day != today) {
        heard.day = today;
        heard.flights.clear();
    }
    if (!message.flight_number.empty() && heard.flights.size() < max_heard_flights)
        heard.flights.insert(flight_key(message.flight_number));
    message.daily_flights = static_cast<std::uint32_t>(heard.flights.size());
}

} // namespace

void heard_before_move_on(heard_before& heard, std::time_t now)
{
    const std::int64_t passed = hour_number(now) - heard.hour;
    if (passed <= 0)
        return; // or the clock was set back: the messages of these hours are counted together
    auto& hours = heard.hours;
    if (passed >= static_cast<std::int64_t>(hours.size())) {
        hours = {};
    } else {
        std::rotate(hours.begin(), hours.begin() + passed, hours.end());
        std::fill(hours.end() - passed, hours.end(), 0);
    }
    heard.hour += passed;
}

void heard_before_add(heard_before& heard, transmission& message, std::time_t now)
{
    heard_before_move_on(heard, now);
    ++heard.hours.back();
    add_contact(heard, message);
    add_flight(heard, message, now);
}

void heard_before_forget(heard_before& heard, const std::string& registration)
{
    const auto found = heard.contacts.find(registration);
    if (found != heard.contacts.end() && --found->second == 0)
        heard.contacts.erase(found);
}

} // namespace tovrik
