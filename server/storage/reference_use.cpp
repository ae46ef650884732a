// reference_use.cpp - see reference_use.hpp.
#include "server/storage/reference_use.hpp"

#include "server/base/text_fields.hpp"
#include "server/messages/traffic_tables.hpp"
#include "server/protocol/packet.hpp"

#include <algorithm>
#include <iterator>

namespace tovrik
{
namespace
{

constexpr std::size_t code_lengths[] = {3, min_airline_code_length}; ///< ICAO's, then IATA's

/// The airline code of a flight number, if it has this length; otherwise nothing.
std::string_view extract_airline_code(std::string_view flight_number, std::size_t length)
{
    if (flight_number.size() <= length || !is_digit(flight_number[length]))
        return {};
    return flight_number.substr(0, length);
}

const reference_entry* find_airline(std::string_view flight_number, const reference_data& reference)
{
    for (const std::size_t length : code_lengths) {
        if (const auto* const found =
                reference.find(kind::add_airline, extract_airline_code(flight_number, length)))
            return found;
    }
    return nullptr;
}

/// The name of the airline with a code, added or built in; empty if there is none.
std::string find_airline_name(std::string_view code, const reference_data& reference)
{
    if (const auto* const added = reference.find(kind::add_airline, code))
        return added->fields[airline_field::name];
    const auto known = airlines();
    const auto found = std::ranges::find(known, code, &airline::code);
    return found == known.end() ? "" : found->name;
}

bool flies_on(const reference_entry& flight, std::time_t time)
{
    std::tm utc{};
    if (gmtime_r(&time, &utc) == nullptr)
        return false;
    // tm_wday counts from Sunday, the flight's days from Monday.
    const std::size_t day =
        (static_cast<std::size_t>(utc.tm_wday) + days_per_week - 1) % days_per_week;
    return flight.fields[flight_field::days][day] != '-';
}

void apply_routing(transmission& message, const reference_entry& flight)
{
    const auto stops = split_fields(flight.fields[flight_field::routing], '-');
    message.from = stops.front();
    message.to = stops.size() > 1 ? stops.back() : std::string_view{};
}

void apply_aircraft(transmission& message, const reference_entry& aircraft,
                    const reference_data& reference)
{
    message.aircraft =
        aircraft.fields[aircraft_field::manufacturer] + " " + aircraft.fields[aircraft_field::type];
    for (const std::size_t field : {aircraft_field::operator_iata, aircraft_field::operator_icao}) {
        const std::string name = find_airline_name(aircraft.fields[field], reference);
        if (!name.empty()) {
            message.operator_name = name;
            return;
        }
    }
}

void apply_label(transmission& message, const reference_data& reference)
{
    const reference_entry* found = nullptr;
    for (const std::size_t length : code_lengths) {
        const auto code = extract_airline_code(message.flight_number, length);
        if (!code.empty() && found == nullptr)
            found = reference.find(kind::add_label, message.label + std::string{code});
    }
    if (found == nullptr)
        found = reference.find(kind::add_label, message.label);
    if (found != nullptr)
        message.label += " [" + found->fields[label_field::description] + "]";
}

void replace_all(std::string& text, const std::string& from, const std::string& to)
{
    for (auto at = text.find(from); !from.empty() && at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

void set_flight_number(transmission& message, const std::string& number)
{
    replace_all(message.content, message.flight_number, number);
    message.flight_number = number;
}

void feature_airline(transmission& message, const reference_entry& entry)
{
    const auto digits = std::find_if(message.flight_number.begin() + min_airline_code_length,
                                     message.flight_number.end(), is_digit);
    set_flight_number(message, upper_case(entry.fields[airline_field::code]) +
                                   std::string{digits, message.flight_number.end()});
}

void feature_flight(transmission& message, const reference_entry& entry)
{
    if (flies_on(entry, message.time))
        set_flight_number(message, entry.fields[flight_field::number]);
}

void feature_aircraft(transmission& message, const reference_entry& entry)
{
    message.registration = entry.fields[aircraft_field::registration];
}

void feature_airport(transmission& message, const reference_entry& entry)
{
    message.to = upper_case(entry.fields[airport_field::code]);
}

void feature_label(transmission& message, const reference_entry& entry)
{
    constexpr std::size_t label_length = 2;
    message.label = entry.fields[label_field::label].substr(0, label_length);
}

struct feature {
    std::uint32_t kind;
    void (*show)(transmission& message, const reference_entry& entry);
};

constexpr feature features[] = {
    {kind::add_airline, feature_airline},   {kind::add_flight, feature_flight},
    {kind::add_aircraft, feature_aircraft}, {kind::add_airport, feature_airport},
    {kind::add_label, feature_label},
};

} // namespace

void apply_reference(transmission& message, const reference_data& reference)
{
    if (reference.is_empty())
        return;
    const auto* const flight = reference.find(kind::add_flight, message.flight_number);
    if (flight != nullptr && flies_on(*flight, message.time))
        apply_routing(message, *flight);
    if (const auto* const owner = find_airline(message.flight_number, reference))
        message.operator_name = owner->fields[airline_field::name];
    if (const auto* const flying = reference.find(kind::add_aircraft, message.registration))
        apply_aircraft(message, *flying, reference);
    apply_label(message, reference);
}

void feature_entry(transmission& message, const reference_data& reference, std::size_t turn)
{
    if (reference.size() == 0 || message.flight_number.size() < min_airline_code_length)
        return;
    const auto entries = reference.entries();
    const reference_entry& entry = entries[turn % entries.size()];
    const auto* const found = std::ranges::find(features, entry.kind, &feature::kind);
    if (found != std::end(features))
        found->show(message, entry);
}

std::string airport_text(std::string_view code, const reference_data& reference)
{
    std::string text{code};
    if (const auto* const known = reference.find(kind::add_airport, code))
        text += " (" + known->fields[airport_field::name] + ")";
    return text;
}

} // namespace tovrik
