// compared_programs.hpp - the programs that are measured side by side, and how each is handled.
//
// The first is the client, the second the floor, and the others are programs that people have.
#pragma once

#include "support/temp_home.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How a program is made to show a message on its screen.
enum class message_road {
    none,   // not from outside
    server, // sent over a connection, as the client's are
    pipe,   // written line by line into the pipe `message_pipe` in its home
};

/// The pipe's name within the home.
constexpr const char* message_pipe = "messages";

/// One program. It runs in a home of its own, which is its working folder too.
struct compared_program {
    const char* name;                             // of its column
    const char* package;                          // Debian's; null: built here
    std::vector<std::string> command;             // the path and the arguments
    std::string_view last_text;                   // that it writes of its first screen
    std::string_view end_keys;                    // what ends it when they are typed
    void (*prepare)(const temp_home& home);       // writes its configuration; null: it needs none
    message_road road;                            // the rest counts for a pipe only
    std::string_view pipe_keys{};                 // typed to make it read the pipe
    std::string (*pipe_line)(std::string_view){}; // what to write for a line; null: the line
};

constexpr std::size_t client_column = 0;
constexpr std::size_t floor_column = 1;

/// The servers in the client's configuration, and the last one that is visible at the start.
constexpr int configured_servers = 100;
constexpr int visible_servers = 20;

/// The client and the floor, and with `with_peers` the installed ones of the other programs, each
/// missing one after a line on standard error.
std::vector<compared_program> programs_to_compare(bool with_peers);

/// Name, package and installed version of each of Debian's among them, one text a program.
std::vector<std::string> package_versions(const std::vector<compared_program>& programs);
