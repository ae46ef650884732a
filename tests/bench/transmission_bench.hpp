// transmission_bench.hpp - measures one transmission's road from its packet to log and screen.
#pragma once

/// What the names of the benchmarks begin with that measure the whole road.
constexpr const char* transmission_road_name = "road/";

/// And those of its steps; behind it the step and the document's size.
constexpr const char* transmission_step_name = "step/";

/// Registers the whole road, plain and compressed, and each of its steps. While they run, a
/// null_screen must be up; its home takes the logs.
void transmission_benchmarks_add();
