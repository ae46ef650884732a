// state_lock.cpp - see state_lock.hpp.
#include "base/state_lock.hpp"

#include <pthread.h>

namespace
{

pthread_mutex_t state_lock = PTHREAD_MUTEX_INITIALIZER;

} // namespace

void state_lock_take()
{
    pthread_mutex_lock(&state_lock);
}

void state_lock_release()
{
    pthread_mutex_unlock(&state_lock);
}
