// hostile_bench.hpp - measures what the most expensive packets cost.
#pragma once

/// The names of the benchmarks begin with this; what the packet holds follows.
constexpr const char* hostile_bench_name = "hostile/";

/// Registers the dispatch of each hostile packet. A null_screen must exist while they run.
void hostile_benchmarks_add();
