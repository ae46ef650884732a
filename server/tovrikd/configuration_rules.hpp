// configuration_rules.hpp - what the tables of the configuration owe each other.
#pragma once

#include "server/tovrikd/configuration.hpp"
#include "server/tovrikd/configuration_values.hpp"

namespace tovrik
{

/// Notes what is wrong between the tables of a configuration that was read from `root`: two
/// listeners on one port, two inputs or channels of one name, mailing without a sender.
void check_configuration_rules(const configuration& made, const toml_value& root, reading& in);

} // namespace tovrik
