// elapsed.cpp - see elapsed.hpp.
#include "base/elapsed.hpp"

#include <algorithm>

std::time_t elapsed_since(std::time_t& start, std::time_t now)
{
    start = std::min(start, now);
    return now - start;
}
