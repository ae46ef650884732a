// own_faults.hpp - makes system calls of the test program itself fail, or kills it before a call.
#pragma once

#include "support/faults.hpp"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" fault_layout* fault_layout_in_use();

/// While it lives, calls fail as described.
class own_fault
{
public:
    explicit own_fault(const fault& wanted)
    {
        fault_set(*fault_layout_in_use(), wanted);
    }
    ~own_fault()
    {
        fault_set(*fault_layout_in_use(), {});
    }
    own_fault(const own_fault&) = delete;
    own_fault& operator=(const own_fault&) = delete;

    static int hits()
    {
        return fault_hits(*fault_layout_in_use());
    }
};

/// Runs `piece` in a child process that is killed before its call number `step`; one write takes at
/// most `write_bytes`. False if the child reached its end alive.
inline bool killed_at(int step, int write_bytes, const std::function<void()>& piece)
{
    const pid_t child = fork();
    if (child == 0) {
        fault_layout_in_use()->piece = write_bytes;
        fault_layout_in_use()->steps = 0;
        fault_layout_in_use()->kill_at = step;
        piece();
        fault_layout_in_use()->kill_at = 0;
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
}
