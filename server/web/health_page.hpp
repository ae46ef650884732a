// health_page.hpp - whether the server is well, for a machine that asks.
#pragma once

#include "server/web/server_report.hpp"

#include <chrono>
#include <string>

namespace tovrik
{

/// A report and how old it is.
struct dated_report {
    const server_report* report = nullptr; ///< null: the server has made none yet
    std::chrono::milliseconds age{0};
};

/// What is wrong with the server, in one line of ISO-8859-1 without a line feed: what its report
/// says, or that there is none, or that it is older than `max_age`. Empty if all is well.
std::string health_trouble(const dated_report& dated, std::chrono::milliseconds max_age);

} // namespace tovrik
