// program_goals.cpp - see program_goals.hpp.
#include "bench/program_goals.hpp"

#include "bench/compared_programs.hpp"

namespace
{

constexpr double max_floor_ratio = 1.3;
constexpr double max_file_kb = 300;
constexpr double max_answer_ms = 100;

std::string format_number(const char* format, double number)
{
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

void add_near_floor(comparison& compared, const figure_row& row)
{
    const std::optional<double> client = row.figures[client_column];
    const std::optional<double> floor = row.figures[floor_column];
    if (!client || !floor)
        return;
    const double ratio = *floor > 0 ? *client / *floor : 0;
    compared.goals.push_back({row.what, format_number("%.2f of the floor's", ratio),
                              format_number("at most %.1f", max_floor_ratio),
                              ratio <= max_floor_ratio});
}

/// One goal for all the other programs: to be below the smallest of them.
void add_leaner(comparison& compared, const figure_row& row)
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
        {row.what,
         format_number("%.2f of ", ratio) + compared.columns[least] + "'s, which has least",
         "less than all others", ratio < 1});
}

/// A limit for the client alone, in the row's unit.
void add_limit(comparison& compared, const figure_row& row, double limit)
{
    const std::optional<double> client = row.figures[client_column];
    if (client)
        compared.goals.push_back({row.what, format_number("%.0f ", *client) + row.unit,
                                  format_number("below %.0f ", limit) + row.unit, *client < limit});
}

} // namespace

void goal_add(comparison& compared, const figure_row& row, measure_goal goal)
{
    if (goal == measure_goal::near_floor || goal == measure_goal::near_floor_leaner)
        add_near_floor(compared, row);
    if (goal == measure_goal::near_floor_leaner)
        add_leaner(compared, row);
    if (goal == measure_goal::small_file)
        add_limit(compared, row, max_file_kb);
    if (goal == measure_goal::quick_answer)
        add_limit(compared, row, max_answer_ms);
}
