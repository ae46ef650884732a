// poll_bench.hpp - measures one poll cycle over many connections.
#pragma once

constexpr const char* poll_idle_name = "poll/idle";
constexpr const char* poll_sending_name = "poll/sending";

/// Registers cycles over 1 to 1,000 connections: one in which no server has sent anything, and one
/// in which each has sent one transmission. A null_screen must exist while they run.
void poll_benchmarks_add();
