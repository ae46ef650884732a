// virtual_time.hpp - a clock that only the client's pauses move, so that nothing is waited for.
//
// The test program's own time(), alarm(), ppoll() and fsync(): a pause takes no time but is noted
// on the clock, alarms never ring by themselves, and the disk is not waited for.
#pragma once

/// What is called at every pause, after signals were let in; null: nothing.
/// now_us: microseconds on the clock.
void pause_watch(void (*watch)(long long now_us));

/// Moves the clock on.
void clock_advance(long seconds);
