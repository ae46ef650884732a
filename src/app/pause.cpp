// pause.cpp - see pause.hpp.
#include "app/pause.hpp"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <pthread.h>

namespace
{

constexpr int watched_signals[] = {SIGALRM, SIGCHLD, SIGWINCH, SIGINT, SIGTERM,
                                   SIGHUP,  SIGQUIT, SIGTSTP,  SIGCONT};

/// What a fault raises. Blocked, it would end the program before the terminal could be given back.
constexpr int fault_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT};

pthread_mutex_t state_lock = PTHREAD_MUTEX_INITIALIZER;
sigset_t open_mask; // what pause_for lets the kernel block while it waits
void (*signal_handlers[NSIG])(int);

sigset_t watched_set()
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

void pause_init()
{
    const sigset_t watched = watched_set();
    pthread_sigmask(SIG_BLOCK, &watched, &open_mask);
    // A parent may have left them blocked, which would make the program deaf.
    for (const int signal_number : watched_signals)
        sigdelset(&open_mask, signal_number);
    state_lock_take();
}

void pause_for(long microseconds)
{
    const timespec limit = {microseconds / 1'000'000, microseconds % 1'000'000 * 1'000};
    const sigset_t mask = open_mask;
    state_lock_release();
    ppoll(nullptr, 0, &limit, &mask);
    state_lock_take();
}

void signal_install(int signal_number, void (*handler)(int))
{
    signal_handlers[signal_number] = handler;
    struct sigaction action = {};
    action.sa_handler = run_handler;
    // Handlers start under the wait's open mask, so the others must be kept out here.
    action.sa_mask = watched_set();
    sigaction(signal_number, &action, nullptr);
}

void signal_silence(int signal_number)
{
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigaction(signal_number, &action, nullptr);
}

all_signals_blocked::all_signals_blocked() : mask_before{}
{
    sigset_t all;
    sigfillset(&all);
    for (const int signal_number : fault_signals)
        sigdelset(&all, signal_number);
    pthread_sigmask(SIG_BLOCK, &all, &mask_before);
}

all_signals_blocked::~all_signals_blocked()
{
    pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
}

bool thread_start(pthread_t& thread, void* (*run)(void*), void* argument)
{
    const all_signals_blocked quiet;
    const bool is_started = pthread_create(&thread, nullptr, run, argument) == 0;
    if (is_started)
        pthread_detach(thread);
    return is_started;
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

void state_lock_take()
{
    pthread_mutex_lock(&state_lock);
}

void state_lock_release()
{
    pthread_mutex_unlock(&state_lock);
}
