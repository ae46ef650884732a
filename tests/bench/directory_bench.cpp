// directory_bench.cpp - see directory_bench.hpp.
#include "bench/directory_bench.hpp"

#include "app/app_state.hpp"
#include "base/pause.hpp"
#include "bench/null_screen.hpp"
#include "net/directory.hpp"
#include "net/server_list_fetch.hpp"
#include "support/scripted_server.hpp"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>

namespace
{

constexpr std::int64_t line_counts[] = {10, 1'000, 10'000, 100'000};
constexpr long round_us = 100;
constexpr std::string_view request_begin = "GET ";

/// The directory's socket. Open before main, since the directory's port is a constant.
scripted_server& open_directory()
{
    static scripted_server server;
    return server;
}

/// Lines in random order, as a directory has them.
std::string make_response(std::int64_t lines)
{
    std::string response = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n";
    std::mt19937 numbers{20240317};
    for (std::int64_t line = 0; line < lines; ++line) {
        char text[128];
        std::snprintf(text, sizeof text,
                      "s%08x-%lld.example\t2202\tx\tFrankfurt am Main\tVHF 131.725 MHz\tx\t"
                      "Station %lld\tx\tx\n",
                      static_cast<unsigned>(numbers()), static_cast<long long>(line),
                      static_cast<long long>(line));
        response += text;
    }
    return response;
}

/// Answers one fetch; on failure the fetch ends without a list.
void answer_fetch(const std::string& response)
{
    std::optional<server_connection> client = open_directory().accept();
    if (client && client->read_bytes(request_begin.size()) == request_begin)
        client->send_bytes(response);
}

void run_fetch(benchmark::State& state)
{
    const std::string response = make_response(state.range(0));
    while (state.KeepRunning()) {
        std::thread answer{answer_fetch, std::cref(response)};
        const auto begin = std::chrono::steady_clock::now();
        start_server_list_fetch();
        while (app_state.fetch.running > 0)
            pause_for(round_us);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        answer.join();
        if (app_state.servers->count != state.range(0))
            state.SkipWithError("not all lines were merged");
        configuration_forget();
    }
}

} // namespace

const char* const directory_host = "127.0.0.1";
const std::int32_t directory_port = open_directory().port();

void directory_benchmarks_add()
{
    for (const std::int64_t count : line_counts)
        benchmark::RegisterBenchmark(directory_bench_name, run_fetch)
            ->Arg(count)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
}
