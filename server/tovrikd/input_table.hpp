// input_table.hpp - the keys of an input, which depend on its type.
#pragma once

#include "server/inputs/input_options.hpp"
#include "server/tovrikd/configuration_values.hpp"

#include <string>

namespace tovrik
{

/// Reads an [[input]]. Without a name of its own it is named after its type and place: "udp 5555".
input_options input_of(const toml_value& table, reading& in);

/// The type of an input as the configuration names it: "tcp-listen".
std::string input_type_name(input_type type);

} // namespace tovrik
