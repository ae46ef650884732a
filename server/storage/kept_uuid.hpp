// kept_uuid.hpp - the identity of a server that stays the same.
#pragma once

#include "server/storage/database.hpp"

#include <string>

namespace tovrik
{

/// Reads the server's uuid; the first time, makes a random one and keeps it. Returns an error text,
/// empty on success.
std::string uuid_read_or_make(database& in, std::string& uuid);

} // namespace tovrik
