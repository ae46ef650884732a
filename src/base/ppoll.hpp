// ppoll.hpp - waits for descriptors or signals.
#pragma once

#include <csignal>
#include <poll.h>

#if defined(__USE_TIME_BITS64) && __TIMESIZE == 32
// The checked form of ppoll in glibc 2.36 takes a short time even where times are long: a pause of
// 40 ms would be none at all. This is the unchecked one, by its name in the library.
extern "C" int ppoll_of_long_times(pollfd* watched, nfds_t count, const timespec* limit,
                                   const sigset_t* mask) __asm__("__ppoll64");
#endif

/// ppoll, with the same arguments and results on every processor.
inline int ppoll_call(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
#if defined(__USE_TIME_BITS64) && __TIMESIZE == 32
    return ppoll_of_long_times(watched, count, limit, mask);
#else
    return ppoll(watched, count, limit, mask);
#endif
}
