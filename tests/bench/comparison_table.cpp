// comparison_table.cpp - see comparison_table.hpp.
#include "bench/comparison_table.hpp"

#include <algorithm>
#include <cstddef>

namespace
{

std::string make_heading(const figure_row& row)
{
    return row.unit.empty() ? row.what : row.what + ", " + row.unit;
}

/// At least three digits, and "-" for what was not measured.
std::string format_figure(const std::optional<double>& figure)
{
    if (!figure)
        return "-";
    const int decimals = *figure < 10 ? 2 : *figure < 100 ? 1 : 0;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, *figure);
    return text;
}

const char* judge(const goal_row& goal)
{
    return goal.is_reached ? "reached" : "missed";
}

} // namespace

std::optional<double> median(std::vector<double> values)
{
    if (values.empty())
        return std::nullopt;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void comparison_print(const comparison& compared, std::FILE* to)
{
    std::fprintf(to, "%-38s", "");
    for (const std::string& column : compared.columns)
        std::fprintf(to, "%10s", column.c_str());
    for (const figure_row& row : compared.rows) {
        std::fprintf(to, "\n%-38s", make_heading(row).c_str());
        for (const std::optional<double>& figure : row.figures)
            std::fprintf(to, "%10s", format_figure(figure).c_str());
    }
    std::fputs("\n\n", to);
    for (const goal_row& goal : compared.goals)
        std::fprintf(to, "%-38s%-42s%-22s%s\n", goal.what.c_str(), goal.figure.c_str(),
                     goal.wanted.c_str(), judge(goal));
    for (const std::string& note : compared.notes)
        std::fprintf(to, "\n%s", note.c_str());
    std::fputs("\n", to);
}

void comparison_write_markdown(const comparison& compared, std::FILE* to)
{
    std::fputs("| measure |", to);
    for (const std::string& column : compared.columns)
        std::fprintf(to, " %s |", column.c_str());
    std::fputs("\n|---|", to);
    for (std::size_t column = 0; column < compared.columns.size(); ++column)
        std::fputs("---:|", to);
    for (const figure_row& row : compared.rows) {
        std::fprintf(to, "\n| %s |", make_heading(row).c_str());
        for (const std::optional<double>& figure : row.figures)
            std::fprintf(to, " %s |", format_figure(figure).c_str());
    }
    std::fputs("\n\n| measure | client | goal | |\n|---|---|---|---|\n", to);
    for (const goal_row& goal : compared.goals)
        std::fprintf(to, "| %s | %s | %s | %s |\n", goal.what.c_str(), goal.figure.c_str(),
                     goal.wanted.c_str(), judge(goal));
    std::fputs("\n", to);
    for (const std::string& note : compared.notes)
        std::fprintf(to, "- %s\n", note.c_str());
}
