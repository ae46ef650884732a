// run_report.hpp - the result of a run with failing allocations, in memory that outlives it.
#pragma once

#include "faults/allocation/crash_report.hpp"
#include "faults/allocation/failing_malloc.hpp"

#include <cstddef>

constexpr std::size_t reported_leaks = 1024;
constexpr std::size_t reported_failures = 64;
constexpr std::size_t reported_text_bytes = 4096;

/// A block that was lost.
struct lost_block {
    std::size_t size_bytes = 0;
    block_origin origin{};
};

struct run_report {
    crash_report crash;
    long counted = 0;         // allocations
    bool has_failed = false;  // an allocation has failed
    bool has_started = false; // the client ran, or was already running
    bool is_over = false;     // the run reached its end
    std::size_t failure_count = 0;
    block_origin failures[reported_failures] = {}; // where the last of them were requested
    std::size_t leak_count = 0;
    lost_block leaks[reported_leaks] = {}; // the first of them
    char complaints[reported_text_bytes] = {};
};

/// Adds a line of complaint; printf-style. Allocates nothing.
void run_complain(run_report& report, const char* format, ...)
    __attribute__((format(printf, 2, 3)));
