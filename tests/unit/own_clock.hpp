// own_clock.hpp - a clock that only the client's pauses move, for what waits for seconds.
#pragma once

#include <functional>

/// While it lives, the test program's time() stands still between pauses, and a pause takes no time
/// but lets waiting signals in. One at a time.
class own_clock
{
public:
    /// first_ms: how far the clock is into a second at the start.
    explicit own_clock(long first_ms = 0);
    ~own_clock();
    own_clock(const own_clock&) = delete;
    own_clock& operator=(const own_clock&) = delete;

    /// Calls this in every pause, after signals were let in. elapsed_ms: since the start.
    void on_pause(std::function<void(long elapsed_ms)> act);

    /// How long all pauses were together, in milliseconds.
    static long elapsed_ms();
    /// How long each pause was, in microseconds; 0 when they were not all the same, or none was.
    static long pause_us();
};
