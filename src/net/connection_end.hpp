// connection_end.hpp - the five ways in which a connection ends.
//
// Each shuts down and closes the socket (socket_fd is 0 then), ends a connect that is still pending
// and drops half a packet. None changes what the server offers, its password, or the time of its
// last data. The rest differs:
//
//                     failed connect  by the user  duplicate     by the server  at exit
//   sends             nothing         good-bye     good-bye      nothing        good-bye
//   reports           error           success      error, beep   error          nothing
//   identity          forgotten       forgotten    kept          forgotten      kept
//   half a report     kept            dropped      kept          kept           dropped
//   own log           kept open       closed       kept open     kept open      closed
//   blanks a marker   none            list_row     list_row + 1  list_row + 1   none
//   connected         set to 0        kept         kept          kept           kept
#pragma once

#include "data/server_registry.hpp"

/// A failed connect, whose child has ended or could not be started.
void connection_end_after_failure(server_entry& entry);

/// By the user. The entry has a connection, or a pending connect.
void connection_end_by_user(server_entry& entry);

/// A duplicate: nothing happens unless another entry is connected to a server of the same identity.
void check_duplicate_connection(server_entry& entry);

/// By the server, which has said so or has been silent for too long.
void close_by_server(server_entry& entry);

/// At exit. The entry may be without a connection; half a report and the log go all the same.
void connection_end_at_exit(server_entry& entry);
