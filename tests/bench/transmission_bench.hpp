// transmission_bench.hpp - measures the path of one transmission from its packet to log and screen.
#pragma once

/// The names of the benchmarks that measure the whole path begin with this.
constexpr const char* transmission_path_name = "road/";

/// And those of its steps; the step and the document's size follow.
constexpr const char* transmission_step_name = "step/";

/// Registers the whole path, plain and compressed, and each of its steps. While they run, a
/// null_screen must exist; its home takes the logs.
void transmission_benchmarks_add();
