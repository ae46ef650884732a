// elapsed.hpp - how long something has lasted by the wall clock, which may be set back meanwhile.
#pragma once

#include <ctime>

static_assert(sizeof(std::time_t) >= 8, "the client works after 2038");

/// Seconds from `start` to `now`, never negative. A start that lies in the future, because the
/// clock was set back, becomes `now`: the time begins again instead of growing without bound.
std::time_t elapsed_since(std::time_t& start, std::time_t now);
