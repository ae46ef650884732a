// signal_door.hpp - which signals are watched, who handles them, and when they are let in.
//
// Handlers run inside pauses only (pause.hpp), under the state lock.
#pragma once

#include <csignal>

/// Blocks the watched signals in the calling thread. Call once, first.
void signal_door_close();

/// The signals to block while a pause waits: all but the watched ones that no handler is running
/// for.
sigset_t signal_door_mask();

/// Makes `handler` run for `signal_number` from now on, inside pauses only, under the state lock.
/// The signal stays blocked until the handler has returned, even in the handler's own pauses. With
/// a null handler the signal only ends the pause that it comes into.
void signal_install(int signal_number, void (*handler)(int));

/// Ignores a signal from now on; a pending one is dropped.
void signal_silence(int signal_number);

/// Lets the signal have its default action here and now, even if it is blocked or handled; the
/// handler is back afterwards. May be called while the program crashes.
void signal_take_default(int signal_number);

/// Blocks every signal except those of a fault until the end of its scope: in the calling thread,
/// and in threads and processes that it starts meanwhile.
class signal_block_guard
{
public:
    signal_block_guard();
    ~signal_block_guard();
    signal_block_guard(const signal_block_guard&) = delete;
    signal_block_guard& operator=(const signal_block_guard&) = delete;

private:
    sigset_t mask_before;
};

/// Gives every signal its default action and unblocks it. For a child just forked.
void signals_reset_in_child();
