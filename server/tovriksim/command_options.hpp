// command_options.hpp - the options of the practice server's command line, with the values they
// take.
#pragma once

#include "base/owners.hpp"
#include "server/base/line_writer.hpp"
#include "server/practice/options.hpp"

#include <CLI/CLI.hpp>

#include <ctime>
#include <string>
#include <unistd.h>

/// The options as they were typed, and the server's options that are made of them.
struct command_line {
    tovrik::line_writer errors{STDERR_FILENO, "tovriksim"};
    tovrik::server_options server{.port = 2202, .rate_per_minute = 30, .record_limit = 0};
    std::string replay_path;
    std::string directory_path;
    std::string json_path;
    unique_fd json_stream;         ///< the server reads from it while it runs
    bool ends_with_stream = false; ///< no message can come after the stream's end
    std::string banner;
    std::string news;
    std::string notice;
    std::string error_text;
    double tick_s = 60; ///< long before a client takes the server for dead
    double close_after_s = 0;
    std::time_t fixed_time = 0;
};

/// Makes `app` take every option and store what was typed in `line`, which must outlive `app`.
/// Values are checked as they are read.
void add_options(CLI::App& app, command_line& line);
