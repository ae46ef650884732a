// known_faults.hpp - the leaks and crashes that stay, by the functions in their backtraces.
#pragma once

#include "faults/allocation/backtrace_names.hpp"

#include <span>
#include <string>
#include <vector>

/// A known leak: "leak:FUNCTION" in one of the suppression files. It matches a backtrace with that
/// function.
struct known_leak {
    std::string function;
};
std::vector<known_leak> known_leaks_read();

/// A library that does not survive a failed allocation of its own: "crash:SCENARIO PLACE", or
/// "sometimes:SCENARIO PLACE", in the folder library_crashes.
struct known_crash {
    std::string scenario;
    std::string place; // of the allocation, as library_place gives it
    bool must_happen = true;
};
std::vector<known_crash> known_crashes_read();

/// Where a library requested memory: "FUNCTION<CALLER<...", innermost first, up to the client's
/// call. "?" stands for functions that the library does not name. For the client's own allocations:
/// the empty text.
std::string library_place(std::span<const frame_name> frames);

/// The functions of return addresses.
std::vector<frame_name> frame_names(std::span<void* const> frames);

/// One frame per line, innermost first.
std::string frames_text(std::span<const frame_name> frames);

/// Whether a backtrace belongs to a known leak.
bool is_known_leak(const std::vector<known_leak>& known, std::span<const frame_name> frames);
