// service_requests.hpp - the services: updates, mailings, pager lists and reports.
//
// Answers requests and changes what the services keep. Refuses a request if the capabilities do not
// offer the service or the client has not been admitted.
#pragma once

#include "server/services/server_core.hpp"

namespace tovrik
{

/// Acts on a packet if its kind belongs to a service; otherwise does nothing.
void answer_service_request(server_core& core, client_session& session, const packet& received);

} // namespace tovrik
