// access_tries.hpp - how often each address has sent a wrong password lately.
#pragma once

#include "server/base/clock.hpp"

#include <cstdint>
#include <map>

namespace tovrik
{

class access_tries
{
public:
    /// Whether an address may try a password now: it has sent fewer than `limit` wrong ones within
    /// a minute of the first of them. Addresses are IPv4, in any byte order. With a limit of 0,
    /// always.
    bool may_try(std::uint32_t address, unsigned limit, time_point now);

    /// Counts a wrong password. Of more than max_watched_addresses, the one that was counted the
    /// longest time ago is forgotten.
    void add_wrong(std::uint32_t address, time_point now);

private:
    struct wrong_count {
        time_point minute_began; ///< with the first wrong password after a minute without any
        unsigned wrong = 0;      ///< in that minute
    };

    std::map<std::uint32_t, wrong_count> counts;
};

} // namespace tovrik
