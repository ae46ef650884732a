// pager_hits.hpp - waiting hits of pager lists, in the database.
//
// All functions return an error text, empty on success.
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/waiting_hits.hpp"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tovrik
{

/// Keeps hits under their numbers; nothing happens to those that are there already, and to those
/// whose list is gone. Beyond max_pager_hits of a list, its oldest go.
std::string pager_hits_keep(database& in, const std::vector<owned_hit>& hits);

/// The hits that their owners have not been told of, and that are not older than `since`, in the
/// order of their numbers. `last` becomes the largest number of any hit, 0 if there is none.
std::string pager_hits_read(database& in, std::time_t since, std::vector<owned_hit>& hits,
                            std::int64_t& last);

/// Remembers that their owners have been told of hits.
std::string pager_hits_tell(database& in, const std::vector<std::int64_t>& ids);

/// Forgets all hits before a moment.
std::string pager_hits_forget(database& in, std::time_t before);

} // namespace tovrik
