// capabilities.hpp - records what a server is and offers.
#pragma once

#include "data/server_registry.hpp"

/// Whether handle_capabilities would ask the user for a password.
bool capabilities_open_box(const server_entry& entry, const char* text);

/// Takes a server's capability message: identity, version and capabilities. If the server demands
/// a password, answers that (password.hpp). Ends the connection if another entry is
/// connected to the same server.
/// text: the packet's NUL-terminated XML.
void handle_capabilities(server_entry& entry, const char* text);
