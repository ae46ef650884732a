// state_lock.hpp - the lock that guards everything the program shares.
//
// The main thread holds it at all times except while it waits in pause_for. Signal handlers take it
// while they run; any other thread takes it for the moments in which it touches shared state.
#pragma once

/// Takes the state lock, and waits for it as long as necessary. Not recursive.
void state_lock_take();

/// Releases the state lock. Only the thread that took it may call this.
void state_lock_release();

/// Holds the state lock until the end of its scope.
class state_lock_guard
{
public:
    state_lock_guard()
    {
        state_lock_take();
    }
    ~state_lock_guard()
    {
        state_lock_release();
    }
    state_lock_guard(const state_lock_guard&) = delete;
    state_lock_guard& operator=(const state_lock_guard&) = delete;
};
