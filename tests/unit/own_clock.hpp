// own_clock.hpp - a clock that only the client's pauses move, for code that waits for seconds.
#pragma once

#include <functional>

/// While it lives, the test program's time() stands still between pauses. A pause takes no real
/// time but lets pending signals in. One at a time.
class own_clock
{
public:
    /// first_ms: how many milliseconds of the second have passed at the start.
    explicit own_clock(long first_ms = 0);
    ~own_clock();
    own_clock(const own_clock&) = delete;
    own_clock& operator=(const own_clock&) = delete;

    /// Calls `act` in every pause, after signals were let in. elapsed_ms: since the start.
    void on_pause(std::function<void(long elapsed_ms)> act);

    /// From now on, waiting for sockets takes no real time either: what is not ready at once is not
    /// ready at all.
    static void ask_sockets_at_once();
    /// Moves the clock, but not the length of the pauses: forward, or back by a negative number.
    static void jump(long seconds);

    /// The length of all pauses together, in milliseconds.
    static long elapsed_ms();
    /// The length of each pause, in microseconds; 0 if they differed or there was none.
    static long pause_us();
};
