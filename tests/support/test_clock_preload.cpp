// test_clock_preload.cpp - a clock that tests can move, loaded into the program with LD_PRELOAD.
//
// The wall clock (time, gettimeofday, clock_gettime with CLOCK_REALTIME or its coarse form) runs
// ahead by the offset in the file that TEST_CLOCK_FILE names; a test may change it at any moment.
// Monotonic and process clocks are left alone, and so are sleeps. A second of alarm() is as long as
// the file says, so that a program that polls once a second does so more often, or only when the
// test sends it SIGALRM. Without the variable nothing changes.
//
// The kernel is asked directly: looking up the next definition of a function would reach the
// sanitizers' own, which may not be ready when the first call comes.
#include "support/test_clock_layout.hpp"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t ms_per_second = 1000;
constexpr std::int64_t ns_per_ms = 1'000'000;
constexpr std::int64_t ns_per_second = 1'000'000'000;

test_clock_layout* shared = nullptr;

__attribute__((constructor)) void attach()
{
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

timespec shifted_now(clockid_t clock)
{
    timespec now{};
    syscall(SYS_clock_gettime, clock, &now);
    if (shared == nullptr)
        return now;
    const std::int64_t offset_ms = shared->offset_ms.load();
    const std::int64_t ns = now.tv_nsec + offset_ms % ms_per_second * ns_per_ms;
    now.tv_sec += offset_ms / ms_per_second + (ns >= ns_per_second ? 1 : 0) - (ns < 0 ? 1 : 0);
    now.tv_nsec = (ns + ns_per_second) % ns_per_second;
    return now;
}

} // namespace

extern "C" {

time_t time(time_t* result) noexcept
{
    const time_t now = shifted_now(CLOCK_REALTIME).tv_sec;
    if (result != nullptr)
        *result = now;
    return now;
}

int clock_gettime(clockid_t clock, timespec* result) noexcept
{
    if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, result));
    *result = shifted_now(clock);
    return 0;
}

int gettimeofday(timeval* result, void*) noexcept
{
    const timespec now = shifted_now(CLOCK_REALTIME);
    result->tv_sec = now.tv_sec;
    result->tv_usec = now.tv_nsec / 1000;
    return 0;
}

unsigned alarm(unsigned seconds) noexcept
{
    const std::int64_t pace =
        shared == nullptr ? ms_per_second : shared->alarm_ms_per_second.load();
    const std::int64_t wanted_ms = pace * seconds;
    itimerval wanted{};
    itimerval previous{};
    wanted.it_value.tv_sec = wanted_ms / ms_per_second;
    wanted.it_value.tv_usec = wanted_ms % ms_per_second * 1000;
    syscall(SYS_setitimer, ITIMER_REAL, &wanted, &previous);
    if (shared != nullptr && seconds > 0)
        shared->alarms.fetch_add(1);
    const std::int64_t left_ms =
        previous.it_value.tv_sec * ms_per_second + previous.it_value.tv_usec / 1000;
    return pace == 0 ? 0 : static_cast<unsigned>((left_ms + pace - 1) / pace);
}

} // extern "C"
