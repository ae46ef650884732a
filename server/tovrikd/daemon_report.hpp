// daemon_report.hpp - what tovrikd says about itself.
#pragma once

#include "server/tovrikd/daemon.hpp"
#include "server/web/server_report.hpp"

#include <memory>
#include <string>

namespace tovrik
{

/// For the web, as everything stands now.
std::shared_ptr<const server_report> daemon_report(daemon& running);

/// For the journal, in one line.
std::string format_counts(daemon& running);

} // namespace tovrik
