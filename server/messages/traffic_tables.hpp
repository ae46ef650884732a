// traffic_tables.hpp - the world that generated traffic comes from: airlines, aircraft, airports.
#pragma once

#include <span>

namespace tovrik
{

struct airline {
    const char* code; ///< two characters, with which its flight numbers begin
    const char* name;
    const char* home;         ///< airport code
    const char* registration; ///< pattern: '?' stands for a letter, '#' for a digit from 1 to 9
    bool long_haul;           ///< flies wide-bodies over oceans, else single-aisles within Europe
};

std::span<const airline> airlines();

/// Codes of the airports at the other end of an airline's flights.
std::span<const char* const> airports(bool long_haul);

/// Aircraft types with their full names.
std::span<const char* const> aircraft_types(bool long_haul);

} // namespace tovrik
