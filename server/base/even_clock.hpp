// even_clock.hpp - whether the wall clock can be believed.
//
// A computer without a clock of its own begins somewhere, and jumps when it learns the time. What
// is thrown away or held back because of its age waits until the clock has run evenly for a while.
#pragma once

#include "server/base/clock.hpp"

#include <ctime>

namespace tovrik
{

struct even_clock {
    time_point seen{};       ///< when it was looked at last
    std::time_t shown = 0;   ///< what it showed then; 0: it was never looked at
    time_point even_since{}; ///< it has not jumped since then
};

/// Looks at the clock, which shows `moment` at `now`. False if it has jumped by some seconds since
/// the last look, or this is the first one.
bool even_clock_look(even_clock& clock, time_point now, std::time_t moment);

} // namespace tovrik
