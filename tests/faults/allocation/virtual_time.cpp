// virtual_time.cpp - see virtual_time.hpp.
#include "faults/allocation/virtual_time.hpp"

#include <csignal>
#include <ctime>
#include <poll.h>
#include <sys/single_threaded.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr long long start_us = 1'700'000'000'000'000;
constexpr long long us_a_second = 1'000'000;
constexpr int kernel_signal_set_bytes = NSIG / 8;

long long now_us = start_us;
void (*watcher)(long long) = nullptr;

int call_kernel_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    // The kernel writes the remaining time into the limit.
    timespec left = limit != nullptr ? *limit : timespec{};
    return static_cast<int>(syscall(SYS_ppoll, watched, count, limit != nullptr ? &left : nullptr,
                                    mask, kernel_signal_set_bytes));
}

/// Other threads still need real processor time.
void let_others_run()
{
    const timespec moment = {0, 100'000};
    if (__libc_single_threaded == 0)
        nanosleep(&moment, nullptr);
}

} // namespace

void pause_watch(void (*watch)(long long))
{
    watcher = watch;
}

void clock_advance(long seconds)
{
    now_us += seconds * us_a_second;
}

extern "C" {

time_t time(time_t* result) noexcept
{
    const time_t now = now_us / us_a_second;
    if (result != nullptr)
        *result = now;
    return now;
}

unsigned alarm(unsigned) noexcept
{
    return 0;
}

int fsync(int)
{
    return 0;
}

/// A pause lets pending signals in and ends at once; a wait for descriptors is left to the kernel.
int ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    if (count > 0 || limit == nullptr)
        return call_kernel_ppoll(watched, count, limit, mask);
    now_us += limit->tv_sec * us_a_second + limit->tv_nsec / 1'000;
    const timespec none = {};
    let_others_run();
    const int result = call_kernel_ppoll(nullptr, 0, &none, mask);
    if (watcher != nullptr)
        watcher(now_us);
    return result;
}

} // extern "C"
