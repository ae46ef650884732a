// kept_updates.hpp - what clients have added to the reference data, in the database.
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/reference_data.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tovrik
{

/// Keeps the entry of an update request; it replaces an entry with the same name, as in
/// reference_data. `is_kept` is false, and nothing changed, if the request makes no sense (see
/// reference_data::add) or if there are max_reference_entries others. Returns an error text, empty
/// on success.
std::string update_keep(database& in, std::uint32_t kind, std::string_view text, bool& is_kept);

/// Adds all kept entries to `reference`. Returns an error text, empty on success.
std::string updates_read(database& in, reference_data& reference);

} // namespace tovrik
