// comparison_table.hpp - figures of several programs side by side, and goals, as tables.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

/// One measure of all programs.
struct figure_row {
    std::string what;
    std::string unit;
    std::vector<std::optional<double>> figures; // in the order of the columns; none: not measured
};

/// The client's goal in one measure.
struct goal_row {
    std::string what;
    std::string figure; // of the client, alone or beside another program's
    std::string wanted;
    bool is_reached = false;
};

struct comparison {
    std::vector<std::string> columns{};
    std::vector<figure_row> rows{};
    std::vector<goal_row> goals{};
    std::vector<std::string> notes{}; // needed to understand the figures
};

/// The median of the values; none without values.
std::optional<double> median(std::vector<double> values);

/// Prints both tables and the notes for a terminal.
void comparison_print(const comparison& compared, std::FILE* to);

/// Writes the same in Markdown.
void comparison_write_markdown(const comparison& compared, std::FILE* to);
