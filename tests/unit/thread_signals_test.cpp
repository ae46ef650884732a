// thread_signals_test.cpp - which signals reach the client's own threads.
#include "base/thread_start.hpp"
#include "support/patience.hpp"

#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <initializer_list>
#include <thread>

namespace
{

struct thread_mask {
    sigset_t blocked = {};
    std::atomic<bool> is_known = false;
};

void* report_mask(void* argument)
{
    auto* mask = static_cast<thread_mask*>(argument);
    pthread_sigmask(SIG_BLOCK, nullptr, &mask->blocked);
    mask->is_known = true;
    return nullptr;
}

void await_mask(const thread_mask& mask)
{
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (!mask.is_known && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
}

} // namespace

TEST(thread_signals, reach_threads_only_for_a_crash)
{
    thread_mask mask;
    pthread_t thread;
    ASSERT_TRUE(thread_start(thread, report_mask, &mask));
    await_mask(mask);
    ASSERT_TRUE(mask.is_known);
    for (const int number : {SIGALRM, SIGCHLD, SIGWINCH, SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGUSR1})
        EXPECT_EQ(sigismember(&mask.blocked, number), 1) << number;
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        EXPECT_EQ(sigismember(&mask.blocked, number), 0) << number;
}
