// database_file.hpp - opens the file of a database, makes it, and brings it to the present schema.
//
// Owns which files are refused. A file that is refused is not changed by a byte.
#pragma once

#include "server/storage/database.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace tovrik
{

/// Whose files these are, and how each version follows from the one before.
struct database_schema {
    std::uint32_t application_id;
    std::span<const char* const> migrations; ///< scripts; number n leads from version n to n + 1
};

/// Opens the database at `path` for reading and writing: a write-ahead log, foreign keys, every
/// commit on disk. A missing file is made whole under another name first (mode 0600, all
/// migrations); a log that has lost its file forbids that. An older version is migrated, each step
/// in a transaction of its own. Refused are files that are no databases, broken ones, those of
/// other programs and those of newer versions. Only the head and the schema are read, so the size
/// does not matter. The file must not be open in this process: looking at it ends the locks of
/// other connections. Returns an error text that begins with the path, empty on success.
std::string database_open(database& opened, const std::string& path, const database_schema& schema);

/// Opens a second connection to a database that is open already; it only reads. Returns an error
/// text that begins with the path, empty on success.
std::string database_open_for_reading(database& opened, const std::string& path);

} // namespace tovrik
