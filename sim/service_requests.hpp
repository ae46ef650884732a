// service_requests.hpp - the services: updates, mailings, pager lists and reports.
//
// Answers requests and changes what the services keep; refuses where the server's capabilities do
// not offer a service, or the client has not been let in.
#pragma once

#include "sim/server_core.hpp"

#include <optional>

namespace sim
{

/// Acts on a packet if its kind is that of a service; otherwise does nothing.
void answer_service_request(server_core& core, client_session& session, const packet& received);

/// What a client is told about a message that one of its pager lists asks for; nothing for others.
std::optional<packet> pager_notice(const server_core& core, const client_session& session,
                                   const transmission& message);

} // namespace sim
