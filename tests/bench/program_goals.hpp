// program_goals.hpp - the client's goals beside the floor and the other programs.
#pragma once

#include "bench/comparison_table.hpp"

/// How a measure counts for the goals.
enum class measure_goal {
    none,
    near_floor,        // within 1.3 times the floor
    near_floor_leaner, // the same, and less than every other program
    small_file,        // below 300 kB
    quick_answer,      // below 100 ms
};

/// Adds the client's result for `goal` in the row `row` to `compared`.
void goal_add(comparison& compared, const figure_row& row, measure_goal goal);
