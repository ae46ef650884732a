// service_state.hpp - what a server looks at for every message: what clients have added, and what
// they watch for. Whatever keeps it (service_store) keeps it up to date.
#pragma once

#include "server/storage/pager_lists.hpp"
#include "server/storage/reference_data.hpp"

namespace tovrik
{

struct service_state {
    reference_data reference;
    pager_lists pagers;
};

} // namespace tovrik
