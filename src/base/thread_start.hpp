// thread_start.hpp - starts the program's few threads.
#pragma once

#include <pthread.h>

/// Starts a detached thread in which every signal except those of a fault is blocked.
/// thread: receives its handle. argument: passed to `run`, which owns it from then on.
/// False if no thread can be started; the argument is then still the caller's.
bool thread_start(pthread_t& thread, void* (*run)(void*), void* argument);
