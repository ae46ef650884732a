// faults.hpp - controls from a test which system calls of a program fail.
//
// Owns the file that both sides map. The preloaded side is fault_preload.cpp.
#pragma once

#include "support/fault_layout.hpp"

#include <limits>
#include <map>
#include <string>
#include <string_view>

/// What is to fail, and how.
struct fault {
    faulty_call call = faulty_call::none;
    int error = 0;           // errno, EAI_ code of a look_up, short_count or end_of_file
    std::string_view name{}; // part of the path of the file concerned; empty: any
    int skipped = 0;         // calls that succeed first
    int failing = 1;         // calls that then fail
};

constexpr int every_call = std::numeric_limits<int>::max();

/// Makes a program's calls fail; replaces what was set before.
void fault_set(fault_layout& layout, const fault& wanted);
/// Makes more of its calls fail. There is room for max_faults in all.
void fault_add(fault_layout& layout, const fault& wanted);
/// How many calls have failed since the last fault_set.
int fault_hits(const fault_layout& layout);

/// The faults of a program that a test starts.
class program_faults
{
public:
    program_faults();
    ~program_faults();
    program_faults(const program_faults&) = delete;
    program_faults& operator=(const program_faults&) = delete;

    /// The environment variables for the program, which loads `preloads` too.
    std::map<std::string, std::string> environment(const std::string& preloads) const;
    void set(const fault& wanted);
    /// The same beside what was set before.
    void add(const fault& wanted);
    /// Kills the program before its call number `step`, counted from now.
    void kill_at(int step);
    /// Sends the program a signal before its call number `step`, counted from now, and then before
    /// each that is a multiple of `every` later; every 0: only once. Its children get none. Signal
    /// 0 ends that.
    void send_before_calls(int signal_number, int step = 1, int every = 0);
    /// How many signals were sent since then.
    int signals() const;
    /// How many calls have failed since the last set().
    int hits() const;
    /// How long the program's latest ppoll on a descriptor was allowed to wait.
    std::int64_t wait_limit_us() const;

private:
    std::string path;
    fault_layout* shared = nullptr;
};
