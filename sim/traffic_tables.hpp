// traffic_tables.hpp - the world that generated traffic comes from: airlines, aircraft, airports.
#pragma once

#include <span>

namespace sim
{

struct airline {
    const char* code; ///< two characters, first part of its flight numbers
    const char* name;
    const char* home;         ///< airport code
    const char* registration; ///< pattern: '?' stands for a letter, '#' for a digit from 1 to 9
    bool long_haul;           ///< flies wide bodies over oceans, else single aisles within Europe
};

std::span<const airline> airlines();

/// Airport codes that a flight can have at its other end.
std::span<const char* const> airports(bool long_haul);

/// Aircraft types, as an airline's database names them.
std::span<const char* const> aircraft_types(bool long_haul);

} // namespace sim
