// heard_before.hpp - how often each aircraft was heard, which flights today, and how much each
// hour.
#pragma once

#include "server/messages/transmission.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace tovrik
{

/// Maximum number of aircraft and of flights that are counted; beyond it, new ones are not.
constexpr std::size_t max_heard_aircraft = 100000;
constexpr std::size_t max_heard_flights = 100000;

constexpr std::size_t heard_hours = 24;

struct heard_before {
    std::map<std::string, std::uint32_t> contacts;  ///< messages, by registration
    std::set<std::string> flights;                  ///< of `day`, in the form of flight_key
    std::int64_t day = 0;                           ///< see day_number
    std::array<std::uint64_t, heard_hours> hours{}; ///< messages; the last is that of `hour`
    std::int64_t hour = 0;                          ///< see hour_number
};

/// Moves the hours on to that of `now`.
void heard_before_move_on(heard_before& heard, std::time_t now);

/// Counts a message that comes now, and fills in its contacts and the flights of its day.
void heard_before_add(heard_before& heard, transmission& message, std::time_t now);

/// Counts a message of an aircraft no longer.
void heard_before_forget(heard_before& heard, const std::string& registration);

} // namespace tovrik
