// directory_page.hpp - the list of servers that clients fetch.
#pragma once

#include "server/web/server_report.hpp"

#include <string>

namespace tovrik
{

/// The directory's lines in ISO-8859-1, each with its nine fields and its line feed. A server whose
/// host is empty gets `own_host`. One that has no host even so is left out, since clients would
/// skip it.
std::string directory_page(const server_report& report, const std::string& own_host);

} // namespace tovrik
