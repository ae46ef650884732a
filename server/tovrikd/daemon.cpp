// daemon.cpp - see daemon.hpp.
#include "server/tovrikd/daemon.hpp"

namespace tovrik
{

daemon::daemon(line_writer& writer)
    : journal(writer), server(offered),
      kept(server.services, chosen.name, [this](const std::string& line) { journal.put(line); }),
      mails({kept.kept, server.services.reference, chosen.name, kept.uuid},
            [this](const std::string& line, line_level level) { journal.put(line, level); })
{
    server.store = &kept;
}

} // namespace tovrik
