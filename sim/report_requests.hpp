// report_requests.hpp - reports: built of a day's messages, compressed, sent in pieces.
#pragma once

#include "sim/server_core.hpp"

namespace sim
{

/// Answers a request of a report: its start, its header and, in turn with other messages, its
/// pieces; or that this server is busy, that there were no messages, or that the request makes no
/// sense. A client whose report is still under way, and any beyond max_reports_at_once, finds it
/// busy.
void answer_report_request(server_core& core, client_session& session, const packet& received);

} // namespace sim
