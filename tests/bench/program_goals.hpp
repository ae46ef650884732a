// program_goals.hpp - what the client is to reach beside the floor and the other programs.
#pragma once

#include "bench/comparison_table.hpp"

/// A measure that counts for the goals, and how.
enum class measure_goal {
    none,
    near_floor,        // within 1.3 times the floor
    near_floor_leaner, // the same, and less than every other program
    small_file,        // below 300 kB
};

/// Adds to `compared` what the client reaches of `goal` in its row `row`.
void goal_add(comparison& compared, const figure_row& row, measure_goal goal);
