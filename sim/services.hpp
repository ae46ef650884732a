// services.hpp - what a server keeps for its services while it runs, all of it in memory.
#pragma once

#include "sim/message_archive.hpp"
#include "sim/pager_lists.hpp"
#include "sim/reference_data.hpp"

#include <map>
#include <string>

namespace sim
{

struct service_state {
    reference_data reference;
    pager_lists pagers;
    std::map<std::string, unsigned> subscriptions; ///< style of the reports, by address
    message_archive archive;
};

} // namespace sim
