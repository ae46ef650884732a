// test_clock_preload.cpp - a clock that tests can move, loaded into the program with LD_PRELOAD.
//
// The wall clock (time, gettimeofday, clock_gettime with CLOCK_REALTIME or its coarse form) is
// ahead by the offset in the file that TEST_CLOCK_FILE names; a test may change it at any moment.
// It can also stand still, or run faster than the real clock by a whole factor. Waits in ppoll() of
// a millisecond or more are then shorter by the same factor; shorter waits depend on the machine,
// not the clock. Monotonic and process clocks do not change. A second of alarm() is as long as the
// file says, so that a program that polls once a second polls more often, or only when the test
// sends it SIGALRM. Without the variable nothing changes.
//
// Calls go straight to the kernel: the next definition of a function would be the sanitizers' own,
// which may not be ready when the first call comes. Only ppoll() goes through them, since the
// thread sanitizer runs handlers only in the waits that it knows.
#include "support/long_times.hpp"
#include "support/test_clock_layout.hpp"

#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/time_types.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t ms_per_second = 1000;
constexpr std::int64_t ns_per_second = 1'000'000'000;

using ppoll_function = int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*);

test_clock_layout* shared = nullptr;
ppoll_function next_ppoll = nullptr;

__attribute__((constructor)) void attach()
{
    next_ppoll = reinterpret_cast<ppoll_function>(dlsym(RTLD_NEXT, long_times::ppoll));
    const char* name = std::getenv(clock_file_variable);
    const int fd = name == nullptr ? -1 : open(name, O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return;
    void* mapped =
        mmap(nullptr, sizeof(test_clock_layout), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    if (mapped != MAP_FAILED)
        shared = static_cast<test_clock_layout*>(mapped);
}

std::int64_t to_ns(const timespec& time)
{
    return time.tv_sec * ns_per_second + time.tv_nsec;
}

timespec to_timespec(std::int64_t ns)
{
    timespec time{};
    time.tv_sec = ns / ns_per_second;
    time.tv_nsec = static_cast<long>(ns % ns_per_second);
    return time;
}

timespec read_shifted_clock(clockid_t clock)
{
    timespec now{};
    syscall(long_times::sys_clock_gettime, clock, &now);
    if (shared == nullptr)
        return now;
    return to_timespec(clock_shown_ns(*shared, to_ns(now)) + shared->offset_ms.load() * ns_per_ms);
}

/// How long a wait takes by the real clock.
timespec shorten_wait(const timespec& wait)
{
    const std::int64_t ns = to_ns(wait);
    const std::int64_t speed = shared == nullptr || ns < ns_per_ms ? 1 : clock_speed_now(*shared);
    return to_timespec(ns / speed);
}

} // namespace

extern "C" {

time_t time(time_t* result) noexcept
{
    const time_t now = read_shifted_clock(CLOCK_REALTIME).tv_sec;
    if (result != nullptr)
        *result = now;
    return now;
}

int clock_gettime(clockid_t clock, timespec* result) noexcept
{
    if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE)
        return static_cast<int>(syscall(long_times::sys_clock_gettime, clock, result));
    *result = read_shifted_clock(clock);
    return 0;
}

int gettimeofday(timeval* result, void*) noexcept
{
    const timespec now = read_shifted_clock(CLOCK_REALTIME);
    result->tv_sec = now.tv_sec;
    result->tv_usec = now.tv_nsec / 1000;
    return 0;
}

unsigned alarm(unsigned seconds) noexcept
{
    const std::int64_t pace =
        shared == nullptr ? ms_per_second : shared->alarm_ms_per_second.load();
    const std::int64_t wanted_ms = pace * seconds;
    __kernel_old_itimerval wanted{}; // the system's own, which differs from itimerval on 32 bits
    __kernel_old_itimerval previous{};
    wanted.it_value.tv_sec = static_cast<__kernel_long_t>(wanted_ms / ms_per_second);
    wanted.it_value.tv_usec = static_cast<__kernel_long_t>(wanted_ms % ms_per_second * 1000);
    syscall(SYS_setitimer, ITIMER_REAL, &wanted, &previous);
    if (shared != nullptr && seconds > 0) {
        shared->last_alarm_s.store(seconds);
        shared->alarms.fetch_add(1);
    }
    const std::int64_t left_ms =
        previous.it_value.tv_sec * ms_per_second + previous.it_value.tv_usec / 1000;
    return pace == 0 ? 0 : static_cast<unsigned>((left_ms + pace - 1) / pace);
}

int ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    if (limit == nullptr)
        return next_ppoll(watched, count, nullptr, mask);
    const timespec wait = shorten_wait(*limit);
    return next_ppoll(watched, count, &wait, mask);
}

} // extern "C"
