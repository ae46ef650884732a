// program_measures.hpp - starts programs side by side and measures them at the start and when idle.
#pragma once

#include "bench/compared_programs.hpp"
#include "bench/process_figures.hpp"

#include <optional>
#include <vector>

/// Figures of many starts of one program, one for each start.
struct start_figures {
    std::vector<double> first_screen_ms{};
    std::vector<double> first_screen_cpu_ms{};
    std::vector<double> first_screen_bytes{};
    std::vector<double> resident_kb{};
    std::vector<double> proportional_kb{};
};

/// Work during an idle time, and memory at its end.
struct idle_figures {
    work_done work{};
    memory_use memory{};
};

struct idle_comparison {
    std::vector<idle_figures> programs{}; // in their order, the client without a connection
    idle_figures connected_client{};
};

/// The programs that start, show their first screen and end correctly; every other one is left out
/// with a line on standard error.
std::vector<compared_program> working_programs(const std::vector<compared_program>& programs);

/// Starts and ends the programs in turns, `repetitions` times. None, with a line on standard error,
/// if a program fails.
std::optional<std::vector<start_figures>>
measure_starts(const std::vector<compared_program>& programs, int repetitions);

/// Runs all programs at the same time for `seconds` without input, and beside them the client once
/// more with `connections` connections that have received their first packets. None, with a line on
/// standard error, if a program fails.
std::optional<idle_comparison> measure_idle(const std::vector<compared_program>& programs,
                                            int connections, int seconds);
