// comparison_table.cpp - see comparison_table.hpp.
#include "bench/comparison_table.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace
{

std::string goal_text(const comparison& line)
{
    char text[64] = "";
    if (line.most_ratio)
        std::snprintf(text, sizeof text, "ratio <= %.3g", *line.most_ratio);
    else if (line.most_client)
        std::snprintf(text, sizeof text, "< %.6g %s", *line.most_client, line.unit.c_str());
    return text;
}

const char* verdict(const comparison& line, double ratio)
{
    if (line.most_ratio)
        return ratio <= *line.most_ratio ? "reached" : "missed";
    if (line.most_client)
        return line.client < *line.most_client ? "reached" : "missed";
    return "";
}

} // namespace

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void comparison_heading_print()
{
    std::printf("%-38s %-5s %10s %10s %7s  %s\n", "", "", "client", "floor", "ratio", "goal");
}

void comparison_print(const comparison& line)
{
    const double ratio = line.floor > 0 ? line.client / line.floor : 0;
    std::printf("%-38s %-5s %10.2f %10.2f %7.2f  %-14s %s\n", line.what.c_str(), line.unit.c_str(),
                line.client, line.floor, ratio, goal_text(line).c_str(), verdict(line, ratio));
    std::fflush(stdout);
}
