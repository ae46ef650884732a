// traffic_generator.cpp - see traffic_generator.hpp.
#include "server/practice/traffic_generator.hpp"

#include "server/messages/traffic_tables.hpp"
#include "server/practice/message_bodies.hpp"

#include <cstdio>

namespace tovrik
{
namespace
{

constexpr std::size_t fleet_size = 48;

/// Percentage of messages from an aircraft not heard before, which replaces another.
constexpr unsigned newcomer_percent = 4;

constexpr unsigned uplink_percent = 11;
constexpr unsigned block_count = 10;     ///< a downlink's block id is one digit
constexpr unsigned sequence_count = 100; ///< a message number has two digits
constexpr unsigned max_first_sequence = 59;
constexpr unsigned max_flight = 1999;

char pick_letter(random_source& random)
{
    return static_cast<char>('A' + random.below(26));
}

std::string make_registration(const char* pattern, random_source& random)
{
    std::string text;
    for (const char* at = pattern; *at != '\0'; ++at) {
        if (*at == '?') {
            text += pick_letter(random);
        } else if (*at == '#') {
            text += static_cast<char>('1' + random.below(9));
        } else {
            text += *at;
        }
    }
    return text;
}

unsigned minute_of_day(std::time_t now)
{
    constexpr std::time_t day_s = 86400;
    return static_cast<unsigned>((now % day_s + day_s) % day_s / 60);
}

} // namespace

traffic_generator::traffic_generator(std::uint64_t seed) : random(seed)
{
    fleet.reserve(fleet_size);
    while (fleet.size() < fleet_size) {
        fleet.push_back(make_aircraft());
    }
}

traffic_generator::aircraft traffic_generator::make_aircraft()
{
    const airline& owner = random.one_of(airlines());
    aircraft made;
    made.registration = make_registration(owner.registration, random);
    made.type = random.one_of(aircraft_types(owner.long_haul));
    made.operator_name = owner.name;
    made.block = random.below(block_count);
    made.sequence = random.between(0, max_first_sequence);
    start_flight(made, owner.long_haul, owner.home, owner.code);
    return made;
}

void traffic_generator::start_flight(aircraft& flying, bool long_haul, const std::string& home,
                                     const std::string& code)
{
    char number[8];
    std::snprintf(number, sizeof number, "%04u", random.between(1, max_flight));
    flying.flight_number = code + number;
    flying.from = home;
    flying.to = random.one_of(airports(long_haul));
    if (random.chance(50))
        flying.from.swap(flying.to);
}

transmission traffic_generator::next(std::time_t now)
{
    aircraft& flying = fleet[random.below(fleet_size)];
    if (random.chance(newcomer_percent))
        flying = make_aircraft();
    if (flying.contacts == 0)
        ++daily_flights;
    ++flying.contacts;

    transmission message;
    message.mode = "2";
    message.registration = flying.registration;
    message.aircraft = flying.type;
    message.operator_name = flying.operator_name;
    message.contacts = flying.contacts;
    message.daily_flights = daily_flights;
    message.time = now;
    if (random.chance(uplink_percent)) {
        fill_uplink(message, flying, minute_of_day(now));
    } else {
        fill_downlink(message, flying, minute_of_day(now));
    }
    return message;
}

void traffic_generator::fill_downlink(transmission& message, aircraft& flying, unsigned minute)
{
    const message_body body = downlink_body(
        random, {flying.flight_number.c_str(), flying.from.c_str(), flying.to.c_str(), minute});
    message.label = body.label;
    message.content = body.content;
    message.block_id = std::to_string(flying.block);
    flying.block = (flying.block + 1) % block_count;
    char number[8];
    std::snprintf(number, sizeof number, "M%02uA", flying.sequence);
    message.message_number = number;
    flying.sequence = (flying.sequence + 1) % sequence_count;
    message.flight_number = flying.flight_number;
    message.from = flying.from;
    message.to = flying.to;
}

// The ground addresses an aircraft, not a flight, so it sends no flight number and no message
// number.
void traffic_generator::fill_uplink(transmission& message, const aircraft& flying, unsigned minute)
{
    const message_body body = uplink_body(
        random, {flying.flight_number.c_str(), flying.from.c_str(), flying.to.c_str(), minute});
    message.label = body.label;
    message.content = body.content;
    message.block_id = pick_letter(random);
}

} // namespace tovrik
