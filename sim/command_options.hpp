// command_options.hpp - the options of the practice server's command line, with the values they
// take.
#pragma once

#include "sim/command_line.hpp"

#include <CLI/CLI.hpp>

/// Has `app` take every option and keep what was typed in `line`, which must live as long. Values
/// are checked while they are read.
void add_options(CLI::App& app, command_line& line);
