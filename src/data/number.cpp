// number.cpp - see number.hpp.
#include "data/number.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>

std::int32_t number_clamped(const char* text)
{
    using range = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<long>(std::strtol(text, nullptr, 10), range::min(), range::max()));
}
