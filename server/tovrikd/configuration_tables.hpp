// configuration_tables.hpp - the tables of the configuration and their keys.
#pragma once

#include "server/tovrikd/configuration.hpp"
#include "server/tovrikd/configuration_values.hpp"

namespace tovrik
{

/// Reads a whole configuration, table by table. What is wrong within one table is noted; rules
/// between tables are those of configuration_rules.
configuration configuration_of(const toml_value& root, reading& in);

} // namespace tovrik
