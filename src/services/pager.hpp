// pager.hpp - the lists of aircraft and flights that a server watches for a subscriber.
#pragma once

#include "data/server_registry.hpp"

/// The user's command for pager lists: adds an entry, removes one, or asks for the list.
void pager_dialog(server_entry& entry);
