// traffic_generator.hpp - generates plausible traffic from a seed.
//
// Owns a fleet of aircraft in flight and what was heard of each. The n-th message of a seed is
// always the same, apart from the times in it, which come from the caller.
#pragma once

#include "server/base/random_source.hpp"
#include "server/messages/transmission.hpp"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tovrik
{

class traffic_generator
{
public:
    explicit traffic_generator(std::uint64_t seed);

    /// The next message, dated `now` (seconds since the epoch). About one in nine is an uplink.
    transmission next(std::time_t now);

private:
    struct aircraft {
        std::string registration;
        std::string type;
        std::string operator_name;
        std::string flight_number;
        std::string from;
        std::string to;
        unsigned block = 0;    ///< of its next downlink, 0 to 9
        unsigned sequence = 0; ///< of its next message number
        std::uint32_t contacts = 0;
    };

    aircraft make_aircraft();
    void start_flight(aircraft& flying, bool long_haul, const std::string& home,
                      const std::string& code);
    void fill_downlink(transmission& message, aircraft& flying, unsigned minute);
    void fill_uplink(transmission& message, const aircraft& flying, unsigned minute);

    random_source random;
    std::vector<aircraft> fleet;
    std::uint32_t daily_flights = 0;
};

} // namespace tovrik
