// reference_data.hpp - the server's database, which clients and files add to: airlines, flights,
// aircraft, airports and message labels.
//
// Owns the entries and the form of the requests that bring them. reference_use applies them to
// messages.
#pragma once

#include "server/base/limits.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tovrik
{

/// Length of the mask that gives a flight's days.
constexpr std::size_t days_per_week = 7;

/// Positions of the fields in an entry, by kind of entry.
namespace airline_field
{
constexpr std::size_t code = 0;
constexpr std::size_t name = 1;
} // namespace airline_field

namespace flight_field
{
constexpr std::size_t number = 0;
constexpr std::size_t routing = 1;
constexpr std::size_t days = 3; ///< a mask from Monday on: "X" if it flies, else "-"
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
constexpr std::size_t label = 0; ///< two characters, or two and an airline's code
constexpr std::size_t description = 1;
} // namespace label_field

struct reference_entry {
    std::uint32_t kind; ///< of the request that brought it
    std::vector<std::string> fields;
};

class reference_data
{
public:
    using entry_key =
        std::pair<std::uint32_t, std::string>; ///< kind, and name in the form that is compared

    /// The key of the entry of a kind whose first field is `name`.
    static entry_key make_key(std::uint32_t kind, std::string_view name);
    reference_data() = default;
    /// `most`: maximum number of entries, in place of max_reference_entries.
    explicit reference_data(std::size_t most);

    /// Adds the entry of an update request; it replaces an entry with the same first field. False,
    /// and nothing changed, if `kind` is not an update request, the number of fields is wrong, a
    /// required field is empty, a field is longer than max_field_bytes or has control characters,
    /// the days of a flight are not a mask of seven, or there are as many entries as there may be.
    bool add(std::uint32_t kind, std::string_view text);

    /// The entry of a kind whose first field is `name`; null if there is none. Case is ignored, and
    /// so are leading zeros of a flight number. The reference data owns it.
    const reference_entry* find(std::uint32_t kind, std::string_view name) const;

    /// From now on, what is not found here is looked for in `others`.
    void fall_back_on(std::shared_ptr<const reference_data> others);

    /// Whether nothing can be found.
    bool is_empty() const;

    /// All entries, in the order of kind and name; not those of others.
    std::vector<reference_entry> entries() const;

    std::size_t size() const;

private:
    std::size_t max_entries = max_reference_entries;
    std::map<entry_key, reference_entry> added;
    std::shared_ptr<const reference_data> others; ///< null: none
};

} // namespace tovrik
