// core_report.hpp - collects the figures of the core and writes them as tables with their goals.
#pragma once

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

/// Microseconds of each benchmark by its name and argument, such as "poll/idle/100": wall clock
/// time where a benchmark asks for it, else CPU time; one value for each repetition.
using core_figures = std::map<std::string, std::vector<double>>;

/// Shows progress, and keeps the figures.
class figure_keeper : public benchmark::ConsoleReporter
{
public:
    figure_keeper() : ConsoleReporter(OO_None) {}
    void ReportRuns(const std::vector<Run>& runs) override;
    bool has_failed() const
    {
        return failed;
    }
    const core_figures& figures() const
    {
        return kept;
    }

private:
    core_figures kept;
    bool failed = false;
};

/// Writes Markdown tables of the figures that were measured: medians, ratios, growth, and whether
/// the goals were reached.
void core_report_write(std::FILE* file, const core_figures& figures);
