// command_line.hpp - the options of tovriksim.
//
// Turns what was typed into the server's options, and reads the files that they name. The program
// runs the server.
#pragma once

#include "base/owners.hpp"
#include "sim/options.hpp"

#include <ctime>
#include <optional>
#include <string>

/// The options as they were typed, and the server's options that are made of them.
struct command_line {
    sim::server_options server{.port = 2202, .rate_per_minute = 30, .record_limit = 0};
    std::string replay_path;
    std::string directory_path;
    std::string json_path;
    unique_fd json_stream; ///< the server reads from it while it runs
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

/// Prints on standard error why the program cannot continue, and returns `status`.
int report_failure(const std::string& why, int status);

/// Reads the options into `line`, whose `server` is then complete. Returns nothing when the server
/// is to run. Otherwise help or an error has been printed, and the exit status is returned.
std::optional<int> read_command_line(int argc, char** argv, command_line& line);
