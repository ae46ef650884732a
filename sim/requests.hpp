// requests.hpp - what the server says to a client of its own accord, and answers to its packets.
#pragma once

#include "sim/server_core.hpp"

namespace sim
{

/// Queues what every new client gets: capabilities first, then questions, greetings and uptime.
void welcome_client(server_core& core, client_session& session);

/// Acts on one packet of a client that is not being closed. Kinds that it does not know are
/// ignored.
void answer_packet(server_core& core, client_session& session, const packet& received);

} // namespace sim
