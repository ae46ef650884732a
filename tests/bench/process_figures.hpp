// process_figures.hpp - what the kernel knows of running processes: their memory and their work.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

/// Memory in use, in kB.
struct memory_use {
    double resident = 0;
    double proportional = 0; // pages shared by n processes count as an nth each
};

/// Work done since the processes started.
struct work_done {
    double cpu_ms = 0;   // in user and system mode, of all threads
    double wake_ups = 0; // times that a thread had slept of its own will
};

/// The processes that were started with `home` as their HOME, in no order.
std::vector<pid_t> processes_at_home(const std::string& home);

/// What the processes use together now; none if the kernel does not tell.
std::optional<memory_use> memory_of(std::span<const pid_t> processes);

/// What the processes have done together until now; none if the kernel does not tell.
std::optional<work_done> work_of(std::span<const pid_t> processes);
