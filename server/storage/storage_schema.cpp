// storage_schema.cpp - see storage_schema.hpp.
//
// A migration that has been released is never changed: a new one follows it.
#include "server/storage/storage_schema.hpp"

namespace tovrik
{
namespace
{

constexpr std::uint32_t application_id = 0x7476726B; ///< "tvrk"

/// Moments are seconds since the epoch, days and hours are counted from it. contacts, flights and
/// hours say what the messages come to, so that nothing has to be counted: message_keep and
/// messages_forget keep them true.
constexpr const char* version_1 = R"(
CREATE TABLE meta(
    name TEXT PRIMARY KEY,
    value BLOB NOT NULL
) STRICT, WITHOUT ROWID;

CREATE TABLE messages(
    id INTEGER PRIMARY KEY,
    received INTEGER NOT NULL,
    time INTEGER NOT NULL,
    mode BLOB NOT NULL,
    registration BLOB NOT NULL,
    label BLOB NOT NULL,
    block_id BLOB NOT NULL,
    message_number BLOB NOT NULL,
    flight_number BLOB NOT NULL,
    content BLOB NOT NULL,
    origin BLOB NOT NULL,
    destination BLOB NOT NULL,
    aircraft BLOB NOT NULL,
    operator_name BLOB NOT NULL,
    station BLOB NOT NULL,
    contacts INTEGER NOT NULL,
    daily_flights INTEGER NOT NULL,
    link INTEGER NOT NULL,
    frequency_mhz REAL NOT NULL,
    level_db REAL NOT NULL,
    continues INTEGER NOT NULL
) STRICT;
CREATE INDEX messages_by_moment ON messages(received);

CREATE TABLE contacts(
    registration BLOB PRIMARY KEY,
    messages INTEGER NOT NULL
) STRICT, WITHOUT ROWID;

CREATE TABLE flights(
    day INTEGER NOT NULL,
    flight BLOB NOT NULL,
    PRIMARY KEY(day, flight)
) STRICT, WITHOUT ROWID;

CREATE TABLE hours(
    hour INTEGER PRIMARY KEY,
    messages INTEGER NOT NULL
) STRICT;

CREATE TABLE updates(
    kind INTEGER NOT NULL,
    name BLOB NOT NULL,
    text BLOB NOT NULL,
    PRIMARY KEY(kind, name)
) STRICT, WITHOUT ROWID;

CREATE TABLE pager_owners(
    id INTEGER PRIMARY KEY,
    address BLOB NOT NULL,
    code INTEGER NOT NULL,
    UNIQUE(address, code)
) STRICT;

CREATE TABLE pager_entries(
    id INTEGER PRIMARY KEY,
    owner INTEGER NOT NULL REFERENCES pager_owners ON DELETE CASCADE,
    registration BLOB NOT NULL,
    flight_number BLOB NOT NULL,
    destination BLOB NOT NULL,
    UNIQUE(owner, registration, flight_number, destination)
) STRICT;

CREATE TABLE pager_hits(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    owner INTEGER NOT NULL REFERENCES pager_owners ON DELETE CASCADE,
    moment INTEGER NOT NULL,
    text BLOB NOT NULL,
    is_told INTEGER NOT NULL DEFAULT 0
) STRICT;
CREATE INDEX pager_hits_by_owner ON pager_hits(owner);
CREATE INDEX pager_hits_by_moment ON pager_hits(moment);

CREATE TABLE subscriptions(
    address BLOB PRIMARY KEY,
    code INTEGER NOT NULL,
    style INTEGER NOT NULL CHECK(style BETWEEN 0 AND 2),
    mailed_day INTEGER NOT NULL
) STRICT, WITHOUT ROWID;
)";

constexpr const char* migrations[] = {version_1};

} // namespace

const database_schema& storage_schema()
{
    static constexpr database_schema schema{application_id, migrations};
    return schema;
}

} // namespace tovrik
