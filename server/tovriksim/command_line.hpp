// command_line.hpp - the options of tovriksim.
//
// Turns what was typed into the server's options, and reads the files that they name. The program
// runs the server.
#pragma once

#include "server/tovriksim/command_options.hpp"

#include <optional>
#include <string>

constexpr int status_failed = 1;
constexpr int status_bad_usage = 2;
constexpr int status_broken_input = 3; ///< the input has ended, and not all of it was sent

/// Prints on standard error why the program cannot continue, and returns `status`.
int report_failure(const std::string& why, int status);

/// Reads the options into `line`, whose `server` is then complete. Returns nothing when the server
/// is to run. Otherwise help or an error has been printed, and the exit status is returned.
std::optional<int> read_command_line(int argc, char** argv, command_line& line);
