// test_clock_layout.hpp - what a test and the preloaded clock share: one small mapped file.
#pragma once

#include <atomic>
#include <cstdint>

/// The environment variable that names the file.
constexpr const char* clock_file_variable = "TEST_CLOCK_FILE";

constexpr std::int64_t ns_per_ms = 1'000'000;

/// From a certain moment on, the clock runs `speed` times as fast as the real one.
struct clock_speed {
    std::atomic<std::int64_t> since_ns; // the real wall clock at that moment
    std::atomic<std::int64_t> shown_ns; // what the clock showed then, without the offset
    std::atomic<std::int64_t> speed;    // 0: as fast as the real one, from the beginning;
                                        // below 0: it stands still
};

struct test_clock_layout {
    /// Added to the wall clock, in milliseconds; the test writes it while the program runs.
    std::atomic<std::int64_t> offset_ms;
    /// The length of the program's second of alarm(), in milliseconds; 0: alarms never ring.
    /// Written by the test; takes effect with the program's next call of alarm().
    std::atomic<std::int64_t> alarm_ms_per_second;
    /// How often alarm() was called with a time above 0; written by the program.
    std::atomic<std::int64_t> alarms;
    /// The time of the last of these calls, in seconds; written by the program.
    std::atomic<std::int64_t> last_alarm_s;
    /// The test fills the one not in use, then switches: the program never reads half a record.
    clock_speed speeds[2];
    std::atomic<std::int64_t> speed_in_use; // 0 or 1
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

/// The speed in effect now; at least 1.
inline std::int64_t clock_speed_now(const test_clock_layout& clock)
{
    const std::int64_t speed = clock.speeds[clock.speed_in_use.load()].speed.load();
    return speed > 1 ? speed : 1;
}

/// What the clock shows when the real wall clock shows `true_ns`, without the offset.
inline std::int64_t clock_shown_ns(const test_clock_layout& clock, std::int64_t true_ns)
{
    const clock_speed& used = clock.speeds[clock.speed_in_use.load()];
    const std::int64_t speed = used.speed.load();
    if (speed <= 0)
        return speed == 0 ? true_ns : used.shown_ns.load();
    return used.shown_ns.load() + (true_ns - used.since_ns.load()) * speed;
}
