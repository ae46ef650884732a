// connection.hpp - opens and closes the connections to servers.
//
// A connect never holds up the program: a child process performs it on the parent's own socket, and
// the child's exit status tells whether the socket is connected now.
#pragma once

#include "data/server_registry.hpp"

#include <cstdint>

/// Creates a socket for host and port. With an entry the connect goes on in a child process, and
/// on_connect_result will learn how it ended; signals may have been served meanwhile. Without an
/// entry it is done in place, which may take long.
/// The socket, which the entry or else the caller owns; -1 when the host has no address, no socket
/// is to be had, or the connect in place failed.
int connect_server(const char* host, std::int32_t port, server_entry* entry);

/// Takes the result of every child that has ended: introduces the client to a server now connected,
/// reports a failed connect. Runs on SIGCHLD.
void on_connect_result(int signal_number);

/// The user's connect command, for the selected server.
void connect_selected_server();

/// The user's disconnect command, for the selected server.
void disconnect_selected_server();

/// Closes this connection if another entry is connected to a server of the same identity.
void check_duplicate_connection(server_entry& entry);

/// Ends an entry's connection, or its pending connect, and drops a packet half received. Nothing is
/// sent and nothing drawn; an entry without a connection is left as it is.
void connection_end(server_entry& entry);

/// Says good-bye to an entry's server, then as connection_end.
void connection_leave(server_entry& entry);

/// Forgets the identity that the entry's server reported.
void server_identity_clear(server_entry& entry);

/// Drops a report that was being received.
void report_reception_drop(server_entry& entry);
