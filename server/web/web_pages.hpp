// web_pages.hpp - which page stands at which path.
#pragma once

#include "server/web/health_page.hpp"
#include "server/web/http_desk.hpp"

#include <string>

namespace tovrik
{

/// The page at a path: the status page at "/", "/tovrikserver.main", "/metrics" and "/healthz"; 404
/// elsewhere, and 503 where there is no report to make the page of. `own_host` is what the
/// directory calls this server. A report older than `max_age` is one of a server that hangs.
web_page web_pages_find(const std::string& path, const std::string& own_host,
                        const dated_report& dated, std::chrono::milliseconds max_age);

} // namespace tovrik
