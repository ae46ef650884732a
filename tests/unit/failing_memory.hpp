// failing_memory.hpp - makes allocations fail in the call under test.
//
// Replaces malloc and its kind, and newwin, for all code that is linked into the test program. What
// the shared libraries allocate for themselves is neither counted nor failed.
#pragma once

#include <cstdint>
#include <functional>

/// Which allocations fail.
enum class memory_failure : std::uint8_t { once, from_then_on };

/// While it lives, allocations of the thread that made it are counted. The nth one fails, or all
/// from the nth on, from 1. One at a time. Only the call under test may run meanwhile:
/// expectations allocate too.
class failing_memory
{
public:
    failing_memory(memory_failure failure, long nth);
    ~failing_memory();
    failing_memory(const failing_memory&) = delete;
    failing_memory& operator=(const failing_memory&) = delete;

    /// Whether an allocation has failed since the latest one was made in this thread.
    static bool has_failed();
};

/// A call and what surrounds it. Only the call itself runs out of memory.
struct memory_trial {
    std::function<void()> prepare = [] {};
    std::function<void()> call;
    /// failure, nth: of the preceding call, in which allocations failed.
    std::function<void(memory_failure failure, long nth)> expect_after_failure;
    std::function<void()> expect_success;
};

/// Makes each allocation of the call fail in turn, once and from then on, until nothing is left to
/// fail: then the call must succeed. After each failure the call is repeated with all memory, and
/// must succeed too. Fails the test if the call allocates nothing.
void try_each_allocation(const memory_trial& trial);
