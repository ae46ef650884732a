// storage_schema.hpp - the tables that a server keeps, and how they came about.
#pragma once

#include "server/storage/database_file.hpp"

namespace tovrik
{

/// The database's name in the folder of the server's state.
constexpr const char* storage_file_name = "tovrikd.sqlite";

const database_schema& storage_schema();

} // namespace tovrik
