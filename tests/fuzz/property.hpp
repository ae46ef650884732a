// property.hpp - the check of a property that must hold.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program with a finding if a property does not hold. property: what should be true.
inline void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}
