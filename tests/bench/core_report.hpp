// core_report.hpp - collects the figures of the pieces and writes them as tables with their goals.
#pragma once

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

/// Microseconds of each benchmark by its name and argument, such as "poll/idle/100": of the wall
/// clock for those that ask for it, else of CPU; one of each repetition.
using core_figures = std::map<std::string, std::vector<double>>;

/// Shows what runs, and keeps its figures.
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

/// Writes tables in Markdown of those figures that were measured: medians, ratios, growth, and
/// whether the goals were reached.
void core_report_write(std::FILE* file, const core_figures& figures);
