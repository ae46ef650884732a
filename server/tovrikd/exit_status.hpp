// exit_status.hpp - how the program ends, and what it says of it.
#pragma once

#include <string>
#include <vector>

namespace tovrik
{

constexpr int status_failed = 1;    ///< it cannot do what was asked for
constexpr int status_bad_usage = 2; ///< wrong options, or something wrong in a file of the owner

/// Prints lines on standard error, each after the program's name. Returns `status`.
int exit_complaining(const std::vector<std::string>& lines, int status);

} // namespace tovrik
