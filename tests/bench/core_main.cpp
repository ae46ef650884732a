// core_main.cpp - measures what the client does with its input, without terminal and network.
//
//   bench_core [--markdown FILE] [options of Google Benchmark]
//
// Its status tells only whether everything worked.
#include "base/pause.hpp"
#include "bench/config_bench.hpp"
#include "bench/core_report.hpp"
#include "bench/directory_bench.hpp"
#include "bench/hostile_bench.hpp"
#include "bench/null_screen.hpp"
#include "bench/poll_bench.hpp"
#include "bench/transmission_bench.hpp"
#include "bench/xml_bench.hpp"

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace
{

/// Removes "--markdown FILE" from the command line. The file's name; null: not given.
const char* take_markdown_option(int& count, char** arguments)
{
    if (count < 3 || std::strcmp(arguments[1], "--markdown") != 0)
        return nullptr;
    const char* name = arguments[2];
    for (int at = 3; at <= count; ++at)
        arguments[at - 2] = arguments[at];
    count -= 2;
    return name;
}

bool write_report(const char* name, const core_figures& figures)
{
    const unique_file file{std::fopen(name, "w")};
    if (!file) {
        std::perror(name);
        return false;
    }
    core_report_write(file.get(), figures);
    return true;
}

} // namespace

int main(int count, char** arguments)
{
    const char* markdown = take_markdown_option(count, arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    pause_init();
    // Each poll cycle sets the alarm for the next one, which must not ring here.
    std::signal(SIGALRM, SIG_IGN);
    const null_screen screen;
    if (!xml_benchmarks_add())
        return 1;
    transmission_benchmarks_add();
    config_benchmarks_add(screen.home());
    directory_benchmarks_add();
    poll_benchmarks_add();
    hostile_benchmarks_add();
    figure_keeper keeper;
    benchmark::RunSpecifiedBenchmarks(&keeper);
    benchmark::Shutdown();
    if (markdown != nullptr && !write_report(markdown, keeper.figures()))
        return 1;
    return keeper.has_failed() ? 1 : 0;
}
