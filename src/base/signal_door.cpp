// signal_door.cpp - see signal_door.hpp.
#include "base/signal_door.hpp"

#include "base/state_lock.hpp"

#include <cerrno>

namespace
{

constexpr int watched_signals[] = {SIGALRM, SIGCHLD, SIGWINCH, SIGINT, SIGTERM,
                                   SIGHUP,  SIGQUIT, SIGTSTP,  SIGCONT};

/// Raised by a fault. If they were blocked, a fault would end the program before it could give the
/// terminal back.
constexpr int fault_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT};

sigset_t open_mask;
void (*signal_handlers[NSIG])(int);

sigset_t make_watched_set()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal_number : watched_signals)
        sigaddset(&set, signal_number);
    return set;
}

void run_handler(int signal_number)
{
    const int saved_errno = errno;
    state_lock_take();
    const sigset_t mask_before = open_mask;
    sigaddset(&open_mask, signal_number);
    if (signal_handlers[signal_number] != nullptr)
        signal_handlers[signal_number](signal_number);
    open_mask = mask_before;
    state_lock_release();
    errno = saved_errno;
}

} // namespace

void signal_door_close()
{
    const sigset_t watched = make_watched_set();
    pthread_sigmask(SIG_BLOCK, &watched, &open_mask);
    // A parent may have left them blocked, which would make the program deaf.
    for (const int signal_number : watched_signals)
        sigdelset(&open_mask, signal_number);
}

sigset_t signal_door_mask()
{
    return open_mask;
}

void signal_install(int signal_number, void (*handler)(int))
{
    signal_handlers[signal_number] = handler;
    struct sigaction action = {};
    action.sa_handler = run_handler;
    // A handler starts under the pause's open mask, so the other signals must be kept out here.
    action.sa_mask = make_watched_set();
    sigaction(signal_number, &action, nullptr);
}

void signal_silence(int signal_number)
{
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigaction(signal_number, &action, nullptr);
}

void signal_take_default(int signal_number)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    struct sigaction before = {};
    sigaction(signal_number, &standard, &before);
    sigset_t one;
    sigset_t mask_before;
    sigemptyset(&one);
    sigaddset(&one, signal_number);
    raise(signal_number);
    pthread_sigmask(SIG_UNBLOCK, &one, &mask_before);
    pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
    sigaction(signal_number, &before, nullptr);
}

signal_block_guard::signal_block_guard() : mask_before{}
{
    sigset_t all;
    sigfillset(&all);
    for (const int signal_number : fault_signals)
        sigdelset(&all, signal_number);
    pthread_sigmask(SIG_BLOCK, &all, &mask_before);
}

signal_block_guard::~signal_block_guard()
{
    pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
}

void signals_reset_in_child()
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal_number = 1; signal_number < NSIG; ++signal_number)
        sigaction(signal_number, &action, nullptr);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
}
