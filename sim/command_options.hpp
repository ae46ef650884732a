// command_options.hpp - the options of the practice server's command line, with the values they
// take.
#pragma once

#include "sim/command_line.hpp"

#include <CLI/CLI.hpp>

/// Makes `app` take every option and store what was typed in `line`, which must outlive `app`.
/// Values are checked as they are read.
void add_options(CLI::App& app, command_line& line);
