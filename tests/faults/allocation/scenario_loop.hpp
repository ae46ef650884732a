// scenario_loop.hpp - a scenario with every allocation failed in turn.
#pragma once

#include "faults/allocation/scenarios.hpp"

#include <string>

/// What came of all runs of a scenario.
struct scenario_result {
    long allocations = 0; // of the run without failures
    long runs = 0;
    long library_crashes = 0;
    std::string failures; // empty: all is well
};

/// Plays the scenario without failures, then with the n-th allocation failing once, and failing
/// from then on, for every n that it reaches. Works in a process of its own, on a terminal and in a
/// home of its own.
scenario_result scenario_loop(const scenario& which);
