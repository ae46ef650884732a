// kept_pagers.hpp - pager lists in the database.
//
// The rules are those of pager_lists, which also finds out what a list is about. All functions
// return an error text, empty on success.
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/pager_lists.hpp"

#include <cstddef>
#include <string>

namespace tovrik
{

/// Puts an entry at the end of a list; one that is there already stays where it is. `is_kept` is
/// false, and nothing changed, in the cases of pager_lists::add.
std::string pager_keep(database& in, const pager_owner& owner, const pager_entry& entry,
                       bool& is_kept);

/// Removes all entries of a list whose fields match those of `pattern`. A list that becomes empty
/// goes, with its hits. `removed` becomes their number.
std::string pager_remove(database& in, const pager_owner& owner, const pager_entry& pattern,
                         std::size_t& removed);

/// Adds all kept entries to `lists`, in their order.
std::string pagers_read(database& in, pager_lists& lists);

} // namespace tovrik
