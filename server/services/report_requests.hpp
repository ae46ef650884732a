// report_requests.hpp - makes reports of a day's messages, compresses them, sends them in pieces.
#pragma once

#include "server/services/server_core.hpp"

namespace tovrik
{

/// Answers a request for a report. A report comes as its start, its header and then its pieces, in
/// turn with other messages. Otherwise the answer is that the server is busy, that there were no
/// messages, or that the request makes no sense. The server counts as busy while this client's
/// report, or max_reports_at_once reports, are under way.
void answer_report_request(server_core& core, client_session& session, const packet& received);

} // namespace tovrik
