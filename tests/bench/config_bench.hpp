// config_bench.hpp - measures how loading and saving the configuration scale with the number of
// servers.
#pragma once

#include "support/temp_home.hpp"

constexpr const char* config_load_name = "config_load";
constexpr const char* config_save_name = "config_save";

/// Registers the benchmarks. home: the folder of HOME; they write its configuration. A null_screen
/// must exist while they run.
void config_benchmarks_add(const temp_home& home);
