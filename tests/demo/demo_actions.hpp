// demo_actions.hpp - the user's actions that all drivers of the demo share.
//
// The working folder is the demo's. What fails says so on standard error and gives false.
#pragma once

#include "support/terminal_session.hpp"

#include <string>
#include <string_view>

constexpr int demo_rows = 30;
constexpr int demo_columns = 100;
constexpr std::chrono::seconds traffic_patience{90};

/// The demo's client in a terminal. client: its program. home: relative to the working folder.
terminal_options demo_terminal(const std::string& client, const std::string& home);

/// Tells which part of the demo failed. Always false.
bool demo_fail(const char* what);

/// A whole file; empty if there is none.
std::string demo_file(const char* name);

/// Fetches the directory, from which the third server comes.
bool demo_fetch(terminal_session& session);

/// Connects to each server of the list, from the first one on.
bool demo_connect(terminal_session& session);

/// Moves the bar up from the last server to the one whose row contains `name`.
bool demo_go_to(terminal_session& session, std::string_view name);

/// Waits for messages of all servers: each shows its flight statistics beside its own row.
bool demo_messages_seen(terminal_session& session);
