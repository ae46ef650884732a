// packet_dispatch.hpp - what the client does about each kind of packet, as a table.
//
// The one room of net that calls services.
#pragma once

#include "data/server_registry.hpp"
#include "net/packet.hpp"

/// Whether packet_dispatch would open a box that waits for the user.
bool packet_opens_box(const server_entry& entry, const packet_buffer& packet);

/// Acts on one whole packet by its kind; unknown kinds are ignored.
void packet_dispatch(server_entry& entry, const packet_buffer& packet);
