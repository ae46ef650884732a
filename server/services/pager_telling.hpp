// pager_telling.hpp - tells the owners of pager lists what their lists have met.
//
// Knows who is there: a client shows that it is the owner of a list with a request that names the
// list's address and code. Nothing that clients send before tells them from others. A hit that no
// client of its owner was sent waits for the next one.
#pragma once

#include "server/services/server_core.hpp"

namespace tovrik
{

/// From now on the client counts as the owner of a list: it is told of the list's waiting hits of
/// the last 24 hours, and then of new ones at once. A client that owns max_pager_lists_per_client
/// lists already is told of no others.
void pager_recognise(client_session& session, const pager_owner& owner);

/// Tells all clients that own lists that ask for a message, each once. Hits of owners without a
/// client wait.
void pager_tell(server_core& core, const transmission& message);

/// Takes note of the hit that the client has been told of, and gives it the next one, which is sent
/// in turn with other packets. The hits of a client that has been told of the end, or is gone, wait
/// again. To be called before and after packets are sent, and at the end.
void pager_serve(server_core& core, client_session& session);

} // namespace tovrik
