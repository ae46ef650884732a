// program_measures.hpp - starts the client and the floor side by side and measures both.
#pragma once

#include "bench/process_figures.hpp"

#include <optional>
#include <vector>

/// Figures of many starts, one of each a start.
struct start_figures {
    std::vector<double> first_screen_ms{};
    std::vector<double> first_screen_bytes{};
    std::vector<double> resident_kb{};
    std::vector<double> proportional_kb{};
};

/// The same of both programs.
struct start_comparison {
    start_figures client{};
    start_figures floor{};
};

/// Work in an idle time, and memory at its end.
struct idle_figures {
    work_done work{};
    memory_use memory{};
};

struct idle_comparison {
    idle_figures client{};
    idle_figures floor{};
};

/// Starts and ends both programs in turns, `repetitions` times, the client with 100 configured
/// servers. None, after a line on standard error, if one does not work.
std::optional<start_comparison> measure_starts(int repetitions);

/// Runs both programs at the same time for `seconds` in which nobody types, the client with
/// `connections` connections that are up and have had their first packets. None, after a line on
/// standard error, if one does not work.
std::optional<idle_comparison> measure_idle(int connections, int seconds);
