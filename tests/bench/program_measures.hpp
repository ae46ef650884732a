// program_measures.hpp - starts programs side by side and measures them, at the start and at rest.
#pragma once

#include "bench/compared_programs.hpp"
#include "bench/process_figures.hpp"

#include <optional>
#include <vector>

/// Figures of many starts of one program, one of each a start.
struct start_figures {
    std::vector<double> first_screen_ms{};
    std::vector<double> first_screen_cpu_ms{};
    std::vector<double> first_screen_bytes{};
    std::vector<double> resident_kb{};
    std::vector<double> proportional_kb{};
};

/// Work in an idle time, and memory at its end.
struct idle_figures {
    work_done work{};
    memory_use memory{};
};

struct idle_comparison {
    std::vector<idle_figures> programs{}; // in their order, the client without a connection
    idle_figures connected_client{};
};

/// Those of the programs that start, show their first screen and end as they should; each other one
/// is left out after a line on standard error.
std::vector<compared_program> working_programs(const std::vector<compared_program>& programs);

/// Starts and ends the programs in turns, `repetitions` times. None, after a line on standard
/// error, if one does not work.
std::optional<std::vector<start_figures>>
measure_starts(const std::vector<compared_program>& programs, int repetitions);

/// Runs all programs at the same time for `seconds` in which nobody types, beside them the client
/// once more with `connections` connections that are up and have had their first packets. None,
/// after a line on standard error, if one does not work.
std::optional<idle_comparison> measure_idle(const std::vector<compared_program>& programs,
                                            int connections, int seconds);
