// scenario_loop.hpp - a scenario in which every allocation fails in turn.
#pragma once

#include "faults/allocation/scenarios.hpp"

#include <string>

/// The result of all runs of a scenario.
struct scenario_result {
    long allocations = 0; // of the run without failures
    long runs = 0;
    long library_crashes = 0;
    std::string failures; // empty: no failures
};

/// Plays the scenario without failures, then with the n-th allocation failing once, and failing
/// from then on, for every n that it reaches. Works in a process of its own, with its own terminal
/// and home.
scenario_result scenario_loop(const scenario& which);
