// service_state.hpp - what a server keeps for its services while it runs, all of it in memory.
#pragma once

#include "server/storage/message_archive.hpp"
#include "server/storage/pager_lists.hpp"
#include "server/storage/reference_data.hpp"

#include <map>
#include <string>

namespace tovrik
{

struct service_state {
    reference_data reference;
    pager_lists pagers;
    std::map<std::string, unsigned> subscriptions; ///< style of the reports, by address
    message_archive archive;
};

} // namespace tovrik
