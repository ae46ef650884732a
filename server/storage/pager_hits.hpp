// pager_hits.hpp - what pager lists have met, kept until their owners have been told.
//
// All functions return an error text, empty on success.
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/pager_lists.hpp"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tovrik
{

struct pager_hit {
    std::int64_t id = 0;
    std::time_t moment = 0;
    std::string text = {};
};

/// Keeps a hit of a list; nothing happens if the list is gone. Beyond max_pager_hits of a list, its
/// oldest go. is_told: the owner has been told already.
std::string pager_hit_keep(database& in, const pager_owner& owner, std::time_t moment,
                           const std::string& text, bool is_told);

/// The hits of a list that its owner has not been told of, and that are not older than `since`; the
/// oldest come first.
std::string pager_hits_read(database& in, const pager_owner& owner, std::time_t since,
                            std::vector<pager_hit>& hits);

/// Remembers that an owner has been told of all hits up to the one with the number `last`.
std::string pager_hits_tell(database& in, const pager_owner& owner, std::int64_t last);

/// Forgets all hits before a moment.
std::string pager_hits_forget(database& in, std::time_t before);

} // namespace tovrik
