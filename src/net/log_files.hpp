// log_files.hpp - the files that transmissions are logged to: one per server, or one for all.
//
// Files are opened for appending and flushed after every record; the client never rotates them.
#pragma once

#include "data/server_registry.hpp"

/// Opens the log that the settings ask for and reports whether that worked: the entry's own, or the
/// shared one. A log that is open already goes on being used; one that cannot be opened stays null.
void open_log_files(server_entry& entry);

/// Closes the entry's own log, if it is open.
void close_log_file(server_entry& entry);

/// Closes the shared log, if it is open.
void close_shared_log();

/// Writes one record to the entry's own log or to the shared one, never to both, and flushes it.
/// Nothing while logging is off or the file is not open.
void log_transmission(server_entry& entry, const char* text);
