// test_clock_layout.hpp - what a test and the preloaded clock share: one small mapped file.
#pragma once

#include <atomic>
#include <cstdint>

/// The environment variable that names the file.
constexpr const char* clock_file_variable = "TEST_CLOCK_FILE";

struct test_clock_layout {
    /// Added to the wall clock, in milliseconds; written by the test while the program runs.
    std::atomic<std::int64_t> offset_ms;
    /// What the program takes for a second of alarm(), in milliseconds; 0: alarms never ring.
    /// Written by the test; holds from the program's next call of alarm() on.
    std::atomic<std::int64_t> alarm_ms_per_second;
    /// Calls of alarm() with a time above 0 so far; written by the program.
    std::atomic<std::int64_t> alarms;
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free);
