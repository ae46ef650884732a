// service_state.hpp - what a server looks at for every message: what clients have added, what they
// watch for, and what they are to be told. Whatever keeps it (service_store) keeps it up to date.
#pragma once

#include "server/storage/pager_lists.hpp"
#include "server/storage/reference_data.hpp"
#include "server/storage/waiting_hits.hpp"

namespace tovrik
{

struct service_state {
    reference_data reference;
    pager_lists pagers;
    waiting_hits hits;
};

/// Removes all entries of a pager list whose fields match those of `pattern`; see
/// pager_lists::remove. A list that becomes empty goes, with its waiting hits. Returns the number
/// of removed entries.
std::size_t state_remove_pager(service_state& state, const pager_owner& owner,
                               const pager_entry& pattern);

} // namespace tovrik
