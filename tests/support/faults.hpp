// faults.hpp - the test's hand on the system calls of a program that runs under it.
//
// Owns the file through which both speak. The preloaded half is fault_preload.cpp.
#pragma once

#include "support/fault_layout.hpp"

#include <limits>
#include <map>
#include <string>
#include <string_view>

/// What is to fail, and how.
struct fault {
    faulty_call call = faulty_call::none;
    int error = 0;           // errno, EAI_ code of a look-up, short_count or end_of_file
    std::string_view name{}; // part of the path of the file that is meant; empty: any
    int skipped = 0;         // calls that go well before
    int failing = 1;         // calls that fail then
};

constexpr int every_call = std::numeric_limits<int>::max();

/// Makes a program's calls fail; what was set before counts no longer.
void fault_set(fault_layout& layout, const fault& wanted);

/// For programs that a test starts.
class program_faults
{
public:
    program_faults();
    ~program_faults();
    program_faults(const program_faults&) = delete;
    program_faults& operator=(const program_faults&) = delete;

    /// The environment variables for the program, which is loaded with `preloads` too.
    std::map<std::string, std::string> environment(const std::string& preloads) const;
    void set(const fault& wanted);
    /// Kills the program before the call that it makes as number `step` from now on.
    void kill_at(int step);
    /// How many calls have failed since the last set.
    int hits() const;
    /// How long the program's latest ppoll on a descriptor might have lasted.
    long wait_limit_us() const;

private:
    std::string path;
    fault_layout* shared = nullptr;
};
