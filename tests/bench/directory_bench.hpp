// directory_bench.hpp - measures how long it takes to fetch a directory's list.
#pragma once

constexpr const char* directory_bench_name = "directory_merge";

/// Registers fetches of 10 to 100,000 lines from a server on this machine, from the key to the
/// merged list. A null_screen must exist while they run.
void directory_benchmarks_add();
