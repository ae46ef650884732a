// password.hpp - answers a server that demands a password.
#pragma once

#include "data/server_registry.hpp"

/// Whether a demand of this server is answered by asking the user.
bool password_is_asked_for(const server_entry& entry);

/// Sends the digest that the configuration has for this server, if passwords are saved; otherwise
/// asks the user.
void password_answer(server_entry& entry);

/// Asks for the server's password in a box with its name, unless its boxes may not open now; keeps
/// the digest in the entry and sends it. Without an answer nothing changes. Modal: the poll cycle,
/// and with it every other server, waits for the user.
void ask_password(server_entry& entry);
