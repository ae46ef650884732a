// test_clock_layout.hpp - what a test and the preloaded clock share: one small mapped file.
#pragma once

#include <atomic>
#include <cstdint>

/// The environment variable that names the file.
constexpr const char* clock_file_variable = "TEST_CLOCK_FILE";

constexpr std::int64_t ns_per_ms = 1'000'000;

/// From a moment on, the clock runs `speed` times as fast as the true one.
struct clock_speed {
    std::atomic<std::int64_t> since_ns; // the true wall clock at that moment
    std::atomic<std::int64_t> shown_ns; // what the clock showed then, the offset left out
    std::atomic<std::int64_t> speed;    // 0: as fast as the true one, from the beginning on
};

struct test_clock_layout {
    /// Added to the wall clock, in milliseconds; written by the test while the program runs.
    std::atomic<std::int64_t> offset_ms;
    /// What the program takes for a second of alarm(), in milliseconds; 0: alarms never ring.
    /// Written by the test; holds from the program's next call of alarm() on.
    std::atomic<std::int64_t> alarm_ms_per_second;
    /// Calls of alarm() with a time above 0 so far; written by the program.
    std::atomic<std::int64_t> alarms;
    /// The time of the last of them, in seconds; written by the program.
    std::atomic<std::int64_t> last_alarm_s;
    /// The test fills the one that is not in use, then switches: the program never reads a half.
    clock_speed speeds[2];
    std::atomic<std::int64_t> speed_in_use; // 0 or 1
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

/// The speed that holds now; at least 1.
inline std::int64_t clock_speed_now(const test_clock_layout& clock)
{
    const std::int64_t speed = clock.speeds[clock.speed_in_use.load()].speed.load();
    return speed > 1 ? speed : 1;
}

/// What the clock shows when the true wall clock shows `true_ns`, the offset left out.
inline std::int64_t clock_shown_ns(const test_clock_layout& clock, std::int64_t true_ns)
{
    const clock_speed& used = clock.speeds[clock.speed_in_use.load()];
    const std::int64_t speed = used.speed.load();
    return speed == 0 ? true_ns : used.shown_ns.load() + (true_ns - used.since_ns.load()) * speed;
}
