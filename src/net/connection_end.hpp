// connection_end.hpp - the five ways in which a connection ends.
//
// Each shuts down and closes the socket (socket_fd is 0 then), ends a connect that is still pending
// and drops a packet half received. The rest differs; servers and users know it like this:
//
//                     failed connect  by the user  duplicate     by the server  at exit
//   sends             nothing         good-bye     good-bye      nothing        good-bye
//   reports           error           success      error, beep   error          nothing
//   identity          forgotten       forgotten    kept          forgotten      kept
//   half a report     kept            dropped      kept          kept           dropped
//   own log           kept open       closed       kept open     kept open      closed
//   marker blanked at no row          list_row     list_row + 1  list_row + 1   no row
//   connected         set to 0        kept         kept          kept           kept
#pragma once

#include "data/server_registry.hpp"

/// Failed connect: reports it and clears what the attempt left. Its child must have ended, or never
/// have started.
void connection_end_after_failure(server_entry& entry);

/// By the user: leaves the server and reports that. The entry must have a connection, or a pending
/// connect.
void connection_end_by_user(server_entry& entry);

/// Duplicate: ends this connection if another entry is connected to a server of the same identity.
void check_duplicate_connection(server_entry& entry);

/// By the server, which has said so or has been silent for too long.
void close_by_server(server_entry& entry);

/// At exit: leaves the server, if there is a connection, and releases the half of a report and the
/// log of any entry.
void connection_end_at_exit(server_entry& entry);
