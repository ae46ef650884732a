// property.hpp - what fuzzers hold the client to.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, as a finding, where a property does not hold. property: what should be so.
inline void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}
