// scenario_run.hpp - one run of a scenario with one plan of failures, in a process of its own.
#pragma once

#include "faults/allocation/run_report.hpp"
#include "faults/allocation/scenarios.hpp"
#include "faults/allocation/terminal_pair.hpp"

/// Plays a scenario to its end: with failing allocations, then with memory again, when the client
/// must go on working, then its shutdown. Never returns; the report says what happened.
/// shell_modes: the terminal's, before the client started.
[[noreturn]] void scenario_run(client_rig& rig, const scenario& which, failure_plan plan, long nth,
                               const termios& shell_modes, run_report& report) noexcept;
