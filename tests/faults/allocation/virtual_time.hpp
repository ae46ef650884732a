// virtual_time.hpp - a clock that only the client's pauses move, so that nothing really waits.
//
// The test program's own time(), alarm(), ppoll() and fsync(): a pause takes no time but advances
// the clock, alarms never ring by themselves, and nothing waits for the disk.
#pragma once

/// Sets what is called at every pause, after signals were let in; null: nothing.
/// now_us: microseconds on the clock.
void pause_watch(void (*watch)(long long now_us));

/// Advances the clock.
void clock_advance(long seconds);
