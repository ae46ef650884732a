// pause.cpp - see pause.hpp.
#include "base/pause.hpp"

#include "app/app_state.hpp"
#include "base/ppoll.hpp"
#include "base/signal_door.hpp"
#include "base/state_lock.hpp"

void pause_init()
{
    signal_door_close();
    state_lock_take();
}

void pause_for(long microseconds)
{
    if (app_state.pause_work != nullptr)
        app_state.pause_work();
    const timespec limit = {microseconds / 1'000'000, microseconds % 1'000'000 * 1'000};
    const sigset_t mask = signal_door_mask();
    state_lock_release();
    // A bare system call: a handler that interrupts it may call anything.
    ppoll_call(nullptr, 0, &limit, &mask);
    state_lock_take();
}
