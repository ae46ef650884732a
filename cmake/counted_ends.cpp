// counted_ends.cpp - lets the coverage build count what runs before ends that know no counters.
//
// Linked into every program of that build, with _exit and raise replaced by these.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

constexpr std::size_t probe_bytes = 4096;

/// Whether files may not grow: a counter file of which a part is written spoils what it held.
bool files_are_limited()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

/// Counter files need a descriptor, also where the program was left none.
void descriptors_allow()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

/// Whoever dies while this writes must not wait for it, and it writes only with memory to do so.
void counters_write()
{
    static std::atomic<bool> is_writing = false;
    const std::unique_ptr<void, decltype(&std::free)> probe{std::malloc(probe_bytes), std::free};
    if (!probe || files_are_limited() || is_writing.exchange(true))
        return;
    descriptors_allow();
    __gcov_dump();
    is_writing = false;
}

void leave_uncounted(int status, void*)
{
    descriptors_allow();
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
