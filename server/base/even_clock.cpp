// even_clock.cpp - see even_clock.hpp.
#include "server/base/even_clock.hpp"

#include <utility>

namespace tovrik
{
namespace
{

constexpr std::chrono::seconds tolerance{5};

} // namespace

bool even_clock_look(even_clock& clock, time_point now, std::time_t moment)
{
    const bool is_first = clock.shown == 0;
    // In seconds: a jump of centuries has too many nanoseconds.
    const auto passed =
        std::chrono::duration_cast<std::chrono::seconds>(now - std::exchange(clock.seen, now));
    const auto shown = std::chrono::seconds{moment - std::exchange(clock.shown, moment)};
    if (!is_first && shown - passed < tolerance && passed - shown < tolerance)
        return true;
    clock.even_since = now;
    return false;
}

} // namespace tovrik
