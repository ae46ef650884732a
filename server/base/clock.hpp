// clock.hpp - the clock that says when something is due.
#pragma once

#include <chrono>

namespace tovrik
{

using steady_clock = std::chrono::steady_clock;
using time_point = steady_clock::time_point;

/// A point of time that never comes.
constexpr time_point never = time_point::max();

} // namespace tovrik
