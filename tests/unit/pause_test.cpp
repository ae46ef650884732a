// pause_test.cpp - which signals reach the client's threads and children.
#include "base/pause.hpp"
#include "base/signal_door.hpp"
#include "base/thread_start.hpp"
#include "unit/unprivileged.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <semaphore>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

struct thread_report {
    sigset_t mask = {};
    std::binary_semaphore is_made{0};
};

void* report_mask(void* argument)
{
    auto* report = static_cast<thread_report*>(argument);
    pthread_sigmask(SIG_BLOCK, nullptr, &report->mask);
    report->is_made.release();
    return nullptr;
}

TEST(pause, threads_block_every_signal_except_those_of_a_fault)
{
    thread_report report;
    pthread_t thread;
    ASSERT_TRUE(thread_start(thread, report_mask, &report));
    report.is_made.acquire();
    for (const int number : {SIGALRM, SIGCHLD, SIGWINCH, SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP,
                             SIGCONT, SIGPIPE, SIGUSR1})
        EXPECT_EQ(sigismember(&report.mask, number), 1) << number;
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
        EXPECT_EQ(sigismember(&report.mask, number), 0) << number;
}

TEST(pause, children_handle_every_signal_with_its_default)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal_silence(SIGPIPE);
        signal_silence(SIGUSR2);
        signals_reset_in_child();
        for (const int number : {SIGPIPE, SIGUSR2, SIGSEGV, SIGTERM}) {
            struct sigaction action = {};
            sigaction(number, nullptr, &action);
            if (action.sa_handler != SIG_DFL)
                _exit(number);
        }
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

/// What a pause lets in.
constexpr int watched_signals[] = {SIGALRM, SIGCHLD, SIGWINCH, SIGINT, SIGTERM,
                                   SIGHUP,  SIGQUIT, SIGTSTP,  SIGCONT};

volatile std::sig_atomic_t errno_in_handler = 0;

TEST(pause, lets_every_watched_signal_in_and_nothing_else_does)
{
    EXPECT_TRUE(in_child([] {
        pause_init();
        sigset_t outside;
        pthread_sigmask(SIG_BLOCK, nullptr, &outside);
        const sigset_t inside = signal_door_mask();
        return std::ranges::all_of(watched_signals, [&](int number) {
            return sigismember(&outside, number) == 1 && sigismember(&inside, number) == 0;
        });
    }));
}

TEST(pause, lets_signals_in_that_the_programs_parent_had_blocked)
{
    EXPECT_TRUE(in_child([] {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        pause_init();
        const sigset_t inside = signal_door_mask();
        return std::ranges::none_of(watched_signals,
                                    [&](int number) { return sigismember(&inside, number) == 1; });
    }));
}

TEST(pause, keeps_the_other_signals_out_of_a_handler)
{
    EXPECT_TRUE(in_child([] {
        signal_install(SIGALRM, nullptr);
        struct sigaction action = {};
        sigaction(SIGALRM, nullptr, &action);
        return std::ranges::all_of(
            watched_signals, [&](int number) { return sigismember(&action.sa_mask, number) == 1; });
    }));
}

TEST(pause, leaves_errno_as_it_was_before_a_handler)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer gives handlers an errno of its own";
#endif
    EXPECT_TRUE(in_child([] {
        signal_install(SIGALRM, [](int) {
            errno_in_handler = errno;
            errno = EBADF;
        });
        errno = ENOSPC;
        raise(SIGALRM);
        return errno == ENOSPC && errno_in_handler == ENOSPC;
    }));
}

} // namespace
