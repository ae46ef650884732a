// reference_data.hpp - what clients have added to the server's database: airlines, flights,
// aircraft, airports and message labels.
//
// Owns the entries and the form of the requests that bring them. What becomes of them in messages
// is the business of reference_use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim
{

/// Length of the mask in a flight's days.
constexpr std::size_t days_a_week = 7;

/// Places of the fields in an entry, by kind of entry.
namespace airline_field
{
constexpr std::size_t code = 0;
constexpr std::size_t name = 1;
} // namespace airline_field

namespace flight_field
{
constexpr std::size_t number = 0;
constexpr std::size_t routing = 1;
constexpr std::size_t days = 3; ///< from Monday on, "X" for a day with the flight, else "-"
} // namespace flight_field

namespace aircraft_field
{
constexpr std::size_t registration = 0;
constexpr std::size_t manufacturer = 1;
constexpr std::size_t type = 3;
constexpr std::size_t operator_iata = 5;
constexpr std::size_t operator_icao = 6;
} // namespace aircraft_field

namespace airport_field
{
constexpr std::size_t code = 0;
constexpr std::size_t name = 1;
} // namespace airport_field

namespace label_field
{
constexpr std::size_t label = 0; ///< two characters, or these and an airline's code
constexpr std::size_t description = 1;
} // namespace label_field

struct reference_entry {
    std::uint32_t kind; ///< of the request that brought it
    std::vector<std::string> fields;
};

class reference_data
{
public:
    /// Adds the entry of an update request, or puts it in the place of the one with the same first
    /// field. False, and nothing changed, when `kind` is not one of these requests, the number of
    /// fields is wrong, a required field is empty, a field is too long or has control characters,
    /// the days of a flight are no mask of seven, or max_reference_entries are there.
    bool add(std::uint32_t kind, std::string_view text);

    /// The entry of a kind whose first field is `name`; null when there is none. Capitals do not
    /// matter, nor do leading zeros of a flight's number.
    const reference_entry* find(std::uint32_t kind, std::string_view name) const;

    /// All entries, by kind and name.
    std::vector<reference_entry> entries() const;

    std::size_t size() const;

private:
    using entry_key = std::pair<std::uint32_t, std::string>; ///< kind and compared name

    static entry_key make_key(std::uint32_t kind, std::string_view name);

    std::map<entry_key, reference_entry> added;
};

} // namespace sim
