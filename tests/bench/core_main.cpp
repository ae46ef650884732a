// core_main.cpp - measures what the client does with its input, without a terminal and a network.
//
// Takes the options of Google Benchmark. Its status tells only whether everything worked.
#include "bench/config_bench.hpp"
#include "bench/null_screen.hpp"
#include "bench/transmission_bench.hpp"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <string>
#include <vector>

namespace
{

constexpr double most_transmission_us = 100;

struct road_figure {
    std::string name;
    double cpu_us;
};

/// Prints the usual table, and keeps what the goals are about.
class goal_reporter : public benchmark::ConsoleReporter
{
public:
    goal_reporter() : ConsoleReporter(OO_None) {}
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            has_failed = has_failed || run.error_occurred;
            if (run.run_type == Run::RT_Iteration &&
                run.benchmark_name().starts_with(transmission_road_name))
                roads.push_back({run.benchmark_name(), run.GetAdjustedCPUTime()});
        }
    }
    bool failed() const
    {
        return has_failed;
    }
    void goals_print() const
    {
        for (const road_figure& road : roads)
            std::printf("%-32s %8.2f us of CPU, goal < %g us: %s\n", road.name.c_str(), road.cpu_us,
                        most_transmission_us,
                        road.cpu_us < most_transmission_us ? "reached" : "missed");
    }

private:
    std::vector<road_figure> roads;
    bool has_failed = false;
};

} // namespace

int main(int count, char** arguments)
{
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    const null_screen screen;
    transmission_benchmarks_add();
    config_benchmarks_add(screen.home());
    goal_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.goals_print();
    benchmark::Shutdown();
    return reporter.failed() ? 1 : 0;
}
