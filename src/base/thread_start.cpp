// thread_start.cpp - see thread_start.hpp.
#include "base/thread_start.hpp"

#include "base/signal_door.hpp"

bool thread_start(pthread_t& thread, void* (*run)(void*), void* argument)
{
    const signal_block_guard blocked;
    const bool is_started = pthread_create(&thread, nullptr, run, argument) == 0;
    if (is_started)
        pthread_detach(thread);
    return is_started;
}
