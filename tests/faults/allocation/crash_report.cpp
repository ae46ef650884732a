// crash_report.cpp - see crash_report.hpp.
#include "faults/allocation/crash_report.hpp"

#include <algorithm>
#include <csignal>
#include <execinfo.h>
#include <iterator>
#include <unistd.h>

extern "C" int __sigaction(int number, const struct sigaction* action,
                           struct sigaction* before) noexcept;

namespace
{

constexpr int crash_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

crash_report* reported = nullptr;

void place_note()
{
    reported->depth = backtrace(reported->frames, crash_frames);
}

void on_crash(int number)
{
    reported->signal_number = number;
    place_note();
    raise(number);
}

} // namespace

void crashes_report_to(crash_report& report)
{
    reported = &report;
    void* first_use[1];
    backtrace(first_use, 1);
    struct sigaction action = {};
    action.sa_handler = on_crash;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (const int number : crash_signals)
        __sigaction(number, &action, nullptr);
}

extern "C" int sigaction(int number, const struct sigaction* action,
                         struct sigaction* before) noexcept
{
    const bool is_crash = std::ranges::find(crash_signals, number) != std::end(crash_signals);
    return __sigaction(number, is_crash ? nullptr : action, before);
}

/// The test program itself leaves through the C library's own.
extern "C" void exit(int status)
{
    if (reported != nullptr)
        place_note();
    _exit(status);
}
