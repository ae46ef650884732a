// comparison_table.hpp - prints figures of the client beside those of the floor.
#pragma once

#include <optional>
#include <string>
#include <vector>

/// A figure of both programs and what the client is to reach.
struct comparison {
    std::string what;
    std::string unit;
    double client = 0;
    double floor = 0;
    std::optional<double> most_ratio{};  // client : floor
    std::optional<double> most_client{}; // in the unit
};

/// The middle of the values, or the mean of the two in the middle. values: not empty.
double median(std::vector<double> values);

/// Prints the heading of a table of comparisons.
void comparison_heading_print();

/// Prints one line: both figures, their ratio, the goal and whether it is reached.
void comparison_print(const comparison& line);
