// hostile_bench.cpp - see hostile_bench.hpp.
#include "bench/hostile_bench.hpp"

#include "app/app_state.hpp"
#include "bench/hostile_documents.hpp"
#include "bench/sample_traffic.hpp"
#include "net/packet_dispatch.hpp"
#include "ui/popup.hpp"

#include <benchmark/benchmark.h>
#include <string>

namespace
{

constexpr int most_lines = 2'040;

void run_packet(benchmark::State& state, const packet_buffer& packet)
{
    server_entry server = {};
    server.list_row = 1;
    app_state.setting_flags = ContactInfo | FlightStats;
    while (state.KeepRunning())
        packet_dispatch(server, packet);
    popup_close();
    app_state.setting_flags = 0;
}

void add(const std::string& what, const packet_buffer& packet)
{
    benchmark::RegisterBenchmark((hostile_bench_name + what).c_str(), run_packet, packet)
        ->Unit(benchmark::kMicrosecond);
}

std::string make_lines()
{
    std::string text;
    for (int line = 0; line < most_lines; ++line)
        text += "x\n";
    return text;
}

} // namespace

void hostile_benchmarks_add()
{
    for (const hostile_document& document : hostile_documents())
        add(document.what, compressed_packet(document.text));
    add("many_lines", text_packet(make_lines()));
}
