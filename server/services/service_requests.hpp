// service_requests.hpp - the services: updates, mailings, pager lists and reports.
//
// Answers requests and changes what the services keep. Refuses a request if the capabilities do not
// offer the service or the client has not been admitted.
#pragma once

#include "server/services/server_core.hpp"

#include <optional>

namespace tovrik
{

/// Acts on a packet if its kind belongs to a service; otherwise does nothing.
void answer_service_request(server_core& core, client_session& session, const packet& received);

/// The notice that tells a client of a message that one of its pager lists asks for. Nothing if no
/// list asks for it.
std::optional<packet> pager_notice(const server_core& core, const client_session& session,
                                   const transmission& message);

} // namespace tovrik
