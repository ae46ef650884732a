// capabilities.hpp - records what a server is and offers, and answers its demand for a password.
#pragma once

#include "data/server_registry.hpp"

/// Takes a server's capability message: identity, version and capabilities. If the server wants a
/// password, sends the saved digest or asks the user. Ends the connection if another entry is
/// connected to the same server.
/// text: the packet's NUL-terminated XML.
void handle_capabilities(server_entry& entry, const char* text);

/// Asks for the server's password, keeps its digest in the entry and sends it. Without an answer
/// nothing changes. Modal: the other servers wait until the user has answered.
void ask_password(server_entry& entry);
