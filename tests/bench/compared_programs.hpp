// compared_programs.hpp - the programs that are measured side by side, and how each is run.
//
// The first is the client, the second the floor, and the others are programs in common use.
#pragma once

#include "support/temp_home.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How a message gets onto a program's screen.
enum class message_source {
    none,   // no message from outside
    server, // over a connection, as for the client
    pipe,   // written line by line to the pipe `message_pipe` in its home
};

/// The pipe's name within the home.
constexpr const char* message_pipe = "messages";

/// One program. It runs in a home of its own, which is also its working folder.
struct compared_program {
    const char* name;                             // of its column
    const char* package;                          // Debian's; null: built here
    std::vector<std::string> command;             // the path and the arguments
    std::string_view last_text;                   // the last text of its first screen
    std::string_view end_keys;                    // the keys that end it
    void (*prepare)(const temp_home& home);       // writes its configuration; null: not needed
    message_source source;                        // the rest is used for a pipe only
    std::string_view pipe_keys{};                 // make it read the pipe
    std::string (*pipe_line)(std::string_view){}; // what to write for a line; null: the line
};

constexpr std::size_t client_column = 0;
constexpr std::size_t floor_column = 1;

/// The number of servers in the client's configuration, and the last one visible at the start.
constexpr int configured_servers = 100;
constexpr int visible_servers = 20;

/// The client and the floor and, with `with_peers`, the installed ones of the other programs. A
/// missing program is skipped with a line on standard error.
std::vector<compared_program> programs_to_compare(bool with_peers);

/// Name, package and installed version of each Debian program, one text per program.
std::vector<std::string> package_versions(const std::vector<compared_program>& programs);
