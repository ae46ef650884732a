// program_goals.cpp - see program_goals.hpp.
#include "bench/program_goals.hpp"

#include "bench/compared_programs.hpp"

namespace
{

constexpr double most_floor_ratio = 1.3;
constexpr double most_file_kb = 300;

std::string formatted(const char* format, double number)
{
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

void near_floor_add(comparison& compared, const figure_row& row)
{
    const std::optional<double> client = row.figures[client_column];
    const std::optional<double> floor = row.figures[floor_column];
    if (!client || !floor)
        return;
    const double ratio = *floor > 0 ? *client / *floor : 0;
    compared.goals.push_back({row.what, formatted("%.2f of the floor's", ratio),
                              formatted("at most %.1f", most_floor_ratio),
                              ratio <= most_floor_ratio});
}

/// One goal for all the other programs: to be below the one that has least.
void leaner_add(comparison& compared, const figure_row& row)
{
    std::size_t least = floor_column;
    for (std::size_t column = floor_column + 1; column < row.figures.size(); ++column) {
        const std::optional<double> figure = row.figures[column];
        if (figure && (least == floor_column || *figure < *row.figures[least]))
            least = column;
    }
    const std::optional<double> client = row.figures[client_column];
    if (least == floor_column || !client)
        return;
    const double ratio = *client / *row.figures[least];
    compared.goals.push_back(
        {row.what, formatted("%.2f of ", ratio) + compared.columns[least] + "'s, which has least",
         "less than all others", ratio < 1});
}

void small_file_add(comparison& compared, const figure_row& row)
{
    const std::optional<double> client = row.figures[client_column];
    if (client)
        compared.goals.push_back({row.what, formatted("%.0f kB", *client),
                                  formatted("below %.0f kB", most_file_kb),
                                  *client < most_file_kb});
}

} // namespace

void goal_add(comparison& compared, const figure_row& row, measure_goal goal)
{
    if (goal == measure_goal::near_floor || goal == measure_goal::near_floor_leaner)
        near_floor_add(compared, row);
    if (goal == measure_goal::near_floor_leaner)
        leaner_add(compared, row);
    if (goal == measure_goal::small_file)
        small_file_add(compared, row);
}
