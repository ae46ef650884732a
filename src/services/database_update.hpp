// database_update.hpp - asks for a new entry of a server's reference database and sends it.
#pragma once

#include "data/server_registry.hpp"

/// The user's command for database updates: menu, prompts, one request. Nothing is sent if a
/// required field is left out. The server's answer is reported when it comes.
void add_entries_dialog(server_entry& entry);
