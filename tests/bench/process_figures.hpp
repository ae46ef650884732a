// process_figures.hpp - the kernel's figures of running processes: their memory and their work.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

/// Memory in use, in kB.
struct memory_use {
    double resident = 0;
    double proportional = 0; // a page shared by n processes counts as an nth for each
};

/// Work done since the processes started.
struct work_done {
    double cpu_ms = 0;   // in user and system mode, of all threads
    double wake_ups = 0; // how often a thread slept by its own choice
};

/// The processes that were started with `home` as their HOME, in any order.
std::vector<pid_t> processes_at_home(const std::string& home);

/// Memory that the processes use together now; none if the kernel does not tell.
std::optional<memory_use> memory_of(std::span<const pid_t> processes);

/// Work that the processes have done together so far; none if the kernel does not tell.
std::optional<work_done> work_of(std::span<const pid_t> processes);
