// log_files.hpp - the files that transmissions are logged to: one per server, or one for all.
//
// Files are opened for appending, and every record is written at once; the client never rotates
// them.
#pragma once

#include "data/server_registry.hpp"

/// Opens the log that the settings ask for, the entry's own or the shared one, and reports whether
/// that worked. A log that is open already goes on being used; one that cannot be opened stays
/// null.
void open_log_files(server_entry& entry);

/// Closes the entry's own log, if it is open.
void close_log_file(server_entry& entry);

/// Closes the shared log, if it is open.
void close_shared_log();

/// Writes one record, at once, to the entry's own log or to the shared one, never to both. Nothing
/// happens while logging is off or the log is not open. If a log cannot take the record, none of it
/// stays there; that is reported once, until the log takes a record again. A log that was deleted
/// is closed, and opened again with the next record.
void log_transmission(server_entry& entry, const char* text);
