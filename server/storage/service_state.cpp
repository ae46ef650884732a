// service_state.cpp - see service_state.hpp.
#include "server/storage/service_state.hpp"

namespace tovrik
{

std::size_t state_remove_pager(service_state& state, const pager_owner& owner,
                               const pager_entry& pattern)
{
    const std::size_t removed = state.pagers.remove(owner, pattern);
    if (!state.pagers.has(owner))
        state.hits.remove_owner(owner);
    return removed;
}

} // namespace tovrik
