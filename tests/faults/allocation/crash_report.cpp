// crash_report.cpp - see crash_report.hpp.
#include "faults/allocation/crash_report.hpp"

#include <algorithm>
#include <csignal>
#include <dlfcn.h>
#include <execinfo.h>
#include <iterator>
#include <unistd.h>

extern "C" int __sigaction(int number, const struct sigaction* action,
                           struct sigaction* before) noexcept;

namespace
{

constexpr int crash_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

crash_report* reported = nullptr;
bool is_noted = false;
void (*client_handlers[NSIG])(int) = {};

void record_place()
{
    reported->depth = backtrace(reported->frames, crash_frames);
}

void on_crash(int number)
{
    reported->signal_number = number;
    record_place();
    is_noted = true;
    if (client_handlers[number] != nullptr)
        client_handlers[number](number);
    raise(number);
}

bool is_crash(int number)
{
    return std::ranges::find(crash_signals, number) != std::end(crash_signals);
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
    if (!is_crash(number) || is_noted || action == nullptr)
        return __sigaction(number, action, before);
    client_handlers[number] = action->sa_handler;
    return 0;
}

/// Not for the test program itself, which returns from main.
extern "C" void exit(int status)
{
    if (reported != nullptr)
        record_place();
    reinterpret_cast<void (*)(int)>(dlsym(RTLD_NEXT, "exit"))(status);
    _exit(status);
}
