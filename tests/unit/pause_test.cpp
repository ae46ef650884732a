// pause_test.cpp - which signals reach the client's threads and children.
#include "base/pause.hpp"
#include "base/signal_door.hpp"
#include "base/thread_start.hpp"

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

} // namespace
