// json_depth.hpp - how deep JSON is nested, asked before it is read.
#pragma once

#include <cstddef>
#include <string_view>

namespace tovrik
{

/// How deep objects and arrays may be nested. Receivers that print the fields of a frame one by one
/// need less than half of that.
constexpr std::size_t max_json_depth = 100;

/// Whether objects and arrays are nested deeper than max_json_depth. What is within strings does
/// not count. The text need not be JSON.
bool is_too_deep(std::string_view text);

} // namespace tovrik
