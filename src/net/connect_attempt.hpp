// connect_attempt.hpp - opens the connections to servers.
//
// A connect never holds up the program: a child process performs it on the parent's own socket, and
// the child's exit status tells whether the socket is connected now.
#pragma once

#include "data/server_registry.hpp"

#include <cstdint>

/// Creates a socket for a host and port. With an entry the connect goes on in a child process, and
/// on_connect_result learns how it ended; signals may have been served meanwhile. Without an entry
/// it is done in place, which may take long.
/// The socket, which the entry or else the caller owns. -1 if the host has no address, no socket
/// can be had, or the connect in place failed.
int connect_server(const char* host, std::int32_t port, server_entry* entry);

/// Takes the results of all children that have ended: introduces the client to a server that is
/// connected now, and ends an attempt that has failed. Runs on SIGCHLD.
void on_connect_result(int signal_number);
