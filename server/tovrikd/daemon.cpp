// daemon.cpp - see daemon.hpp.
#include "server/tovrikd/daemon.hpp"

namespace tovrik
{

daemon::daemon(line_writer& writer)
    : journal(writer), server(offered),
      kept(server.services, chosen.name, [this](const std::string& line) { journal.put(line); })
{
    server.store = &kept;
}

} // namespace tovrik
