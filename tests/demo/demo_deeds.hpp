// demo_deeds.hpp - what a person does in the demo, as far as all who drive it do the same.
//
// The working folder is the demo's. What does not come off says so on standard error and is false.
#pragma once

#include "support/terminal_session.hpp"

#include <string>
#include <string_view>

constexpr int demo_rows = 30;
constexpr int demo_columns = 100;
constexpr std::chrono::seconds traffic_patience{90};

/// Tells which part of the demo did not come off. Always false.
bool demo_fail(const char* what);

/// A file, whole; empty if it is not there.
std::string demo_file(const char* name);

/// Fetches the directory, from which the third server comes.
bool demo_fetch(terminal_session& session);

/// Connects to each server of the list, from the first on.
bool demo_connect(terminal_session& session);

/// Moves the bar up from the last server to the one whose row holds `name`.
bool demo_go_to(terminal_session& session, std::string_view name);

/// Waits for messages of all servers: each shows its flight statistics beside its own row.
bool demo_messages_seen(terminal_session& session);
