// pause.hpp - the one door through which signals come in, and the state lock that goes with it.
//
// The watched signals are blocked in the main thread at all times except inside pause_for, so a
// handler never finds anything half done: it may draw, allocate, send, and pause itself. The state
// lock is held by the main thread at all times except inside that wait; handlers take it again
// while they run, and any other thread takes it for the moments in which it touches shared state.
#pragma once

#include <csignal>
#include <pthread.h>

/// Blocks the watched signals in the calling thread and takes the state lock. Call once, first.
void pause_init();

/// Sleeps for `microseconds`, or less when a signal came; the only place where signals are let in.
/// Any window of app_state and any entry's connection may have changed on return.
void pause_for(long microseconds);

/// Has `handler` run for `signal_number` from now on, inside pauses only, under the state lock.
/// The signal stays blocked until the handler has returned, its own pauses included. With a null
/// handler it only ends the pause that it came into.
void signal_install(int signal_number, void (*handler)(int));

/// Has a signal ignored from now on; one that was pending is dropped.
void signal_silence(int signal_number);

/// Keeps every signal but those of a crash out of the calling thread, and of threads and processes
/// that it starts meanwhile, until the end of its scope.
class all_signals_blocked
{
public:
    all_signals_blocked();
    ~all_signals_blocked();
    all_signals_blocked(const all_signals_blocked&) = delete;
    all_signals_blocked& operator=(const all_signals_blocked&) = delete;

private:
    sigset_t mask_before;
};

/// Starts a detached thread in which every signal but those of a crash is blocked. False when there
/// is none to be had. thread: its handle. argument: what `run` is given; the thread's from then on.
bool thread_start(pthread_t& thread, void* (*run)(void*), void* argument);

/// Gives every watched signal its default action and unblocks it, in a child just forked.
void signals_reset_in_child();

/// Takes the state lock; for threads other than the main one.
void state_lock_take();

/// Lets the state lock go again.
void state_lock_release();
