// number.hpp - reads decimal numbers that come from outside.
#pragma once

#include <cstdint>

/// The decimal number at the start of `text` (never null), as strtol reads it: 0 if there is none,
/// the nearest 32-bit number if it is out of range.
std::int32_t number_clamped(const char* text);
