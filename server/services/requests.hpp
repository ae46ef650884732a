// requests.hpp - what the server sends a new client, and how it answers a client's packets.
#pragma once

#include "server/services/server_core.hpp"

namespace tovrik
{

/// Queues what every new client gets: capabilities first, then the request for its name, greetings
/// and uptime. A client that need not give a name or password is admitted at once.
void welcome_client(server_core& core, client_session& session);

/// Acts on one packet of a client that is not being closed. Unknown kinds are ignored.
void answer_packet(server_core& core, client_session& session, const packet& received);

} // namespace tovrik
