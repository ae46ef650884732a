// process_figures.hpp - what the kernel knows of a running process: its memory and its work.
#pragma once

#include <optional>
#include <sys/types.h>

/// Memory in use, in kB.
struct memory_use {
    double resident = 0;
    double proportional = 0; // pages shared by n processes count as an nth each
};

/// Work done since the process started.
struct work_done {
    double cpu_ms = 0;   // in user and system mode, of all threads
    double wake_ups = 0; // times that a thread had slept of its own will
};

/// The process's memory now; none if the kernel does not tell.
std::optional<memory_use> memory_of(pid_t process);

/// The process's work until now; none if the kernel does not tell.
std::optional<work_done> work_of(pid_t process);
