// retry_pause.hpp - how long to wait before connecting again.
#pragma once

#include "server/inputs/input_limits.hpp"

#include <algorithm>
#include <utility>

namespace tovrik
{

/// A pause that grows with every failure in a row. A new record begins anew.
struct retry_pause {
    std::chrono::seconds next = first_retry_pause;
};

/// How long to wait now, after a failure.
inline std::chrono::seconds retry_take_pause(retry_pause& pause)
{
    return std::exchange(pause.next, std::min(pause.next * 2, longest_retry_pause));
}

} // namespace tovrik
