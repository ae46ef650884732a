// command_line.hpp - the options of tovriksim.
//
// Turns what was typed into the server's options, and reads the files that they name. Running the
// server is the program's.
#pragma once

#include "base/owners.hpp"
#include "sim/options.hpp"

#include <ctime>
#include <optional>
#include <string>

/// What the command line says, as far as it is not yet in the form that the server takes.
struct command_line {
    sim::server_options server{.port = 2202, .rate_a_minute = 30, .record_limit = 0};
    std::string replay_path;
    std::string directory_path;
    std::string json_path;
    unique_fd json_stream; ///< read by the server while it runs
    std::string banner;
    std::string news;
    std::string notice;
    std::string error_text;
    double tick_s = 0;
    double close_after_s = 0;
    std::time_t fixed_time = 0;
};

constexpr int status_failed = 1;
constexpr int status_bad_usage = 2;

/// Prints why the program cannot go on, on standard error. The given status.
int failed(const std::string& why, int status);

/// Reads the options into `line.server`, ready for the server. The status to end with, having
/// printed help or what is wrong; nothing when the server is to run.
std::optional<int> read_command_line(int argc, char** argv, command_line& line);
