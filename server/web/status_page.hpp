// status_page.hpp - the server's state as a page for people.
#pragma once

#include "server/web/server_report.hpp"

#include <string>

namespace tovrik
{

/// The page in UTF-8: HTML that is well-formed XML too, with its style in it, no script and nothing
/// from elsewhere. `trouble`, in ISO-8859-1, is shown on top unless it is empty.
std::string status_page(const server_report& report, const std::string& trouble);

} // namespace tovrik
