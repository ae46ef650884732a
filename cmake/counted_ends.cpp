// counted_ends.cpp - lets the coverage build count what runs before ends that know no counters.
//
// Linked into every program of that build, with _exit and raise replaced by these.
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>

extern "C" {
void __gcov_dump();
void __gcov_reset();
[[noreturn]] void __real__exit(int status);
int __real_raise(int signal_number);
[[noreturn]] void __wrap__exit(int status);
int __wrap_raise(int signal_number);
}

namespace
{

/// Whether files may not grow: a counter file of which a part is written spoils what it held.
bool files_are_limited()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

void counters_write()
{
    if (!files_are_limited())
        __gcov_dump();
}

void leave_uncounted(int status, void*)
{
    if (!files_are_limited())
        return;
    std::fflush(nullptr);
    __real__exit(status);
}

/// Complaints about counter files must not get into what a test reads.
[[gnu::constructor]] void complaints_redirect()
{
    setenv("GCOV_ERROR_FILE", COUNTER_COMPLAINTS, 0);
    on_exit(leave_uncounted, nullptr);
}

} // namespace

void __wrap__exit(int status)
{
    counters_write();
    __real__exit(status);
}

int __wrap_raise(int signal_number)
{
    counters_write();
    __gcov_reset();
    return __real_raise(signal_number);
}
