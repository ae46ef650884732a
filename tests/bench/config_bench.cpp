// config_bench.cpp - see config_bench.hpp.
#include "bench/config_bench.hpp"

#include "app/app_state.hpp"
#include "bench/null_screen.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "support/config_text.hpp"

#include <benchmark/benchmark.h>
#include <string>

namespace
{

constexpr std::int64_t server_counts[] = {10, 1'000, 10'000};

std::string make_config(std::int64_t servers)
{
    client_settings settings;
    for (std::int64_t number = 1; number <= servers; ++number) {
        char name[64];
        std::snprintf(name, sizeof name, "acars%05lld.example.net", static_cast<long long>(number));
        settings.servers.push_back({.name = name,
                                    .alias = "Station " + std::to_string(number),
                                    .location = "Frankfurt am Main",
                                    .info = "VHF 131.725 MHz"});
    }
    return config_text(settings);
}

void run_load(benchmark::State& state, const temp_home* home)
{
    home->write_config(make_config(state.range(0)));
    while (state.KeepRunning()) {
        config_load();
        state.PauseTiming();
        if (app_state.servers->count != state.range(0))
            state.SkipWithError("not all servers were loaded");
        configuration_forget();
        state.ResumeTiming();
    }
}

void run_save(benchmark::State& state, const temp_home* home)
{
    home->write_config(make_config(state.range(0)));
    config_load();
    while (state.KeepRunning())
        config_save();
    if (app_state.servers->count != state.range(0))
        state.SkipWithError("not all servers were saved");
    configuration_forget();
}

} // namespace

void config_benchmarks_add(const temp_home& home)
{
    for (const std::int64_t count : server_counts) {
        benchmark::RegisterBenchmark(config_load_name, run_load, &home)
            ->Arg(count)
            ->Unit(benchmark::kMicrosecond);
        // Few rounds: the program saves once, and what it reads before a save stays in memory.
        benchmark::RegisterBenchmark(config_save_name, run_save, &home)
            ->Arg(count)
            ->Iterations(10)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
    }
}
