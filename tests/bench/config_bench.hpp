// config_bench.hpp - measures how loading the configuration grows with the number of servers.
#pragma once

#include "support/temp_home.hpp"

/// Registers the benchmarks. home: where HOME points to; its configuration is written by them.
/// A null_screen must be up while they run.
void config_benchmarks_add(const temp_home& home);
