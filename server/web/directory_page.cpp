// directory_page.cpp - see directory_page.hpp.
#include "server/web/directory_page.hpp"

#include "server/web/web_text.hpp"

namespace tovrik
{

std::string directory_page(const server_report& report, const std::string& own_host)
{
    std::string lines;
    for (const listed_server& server : report.listed) {
        const std::string host = web_field(server.host.empty() ? own_host : server.host);
        if (host.empty())
            continue;
        lines += host + '\t' + std::to_string(server.port) + "\t\t" + web_field(server.location) +
                 '\t' + web_field(server.description) + "\t\t" + web_field(server.name) + "\t\t\n";
    }
    return lines;
}

} // namespace tovrik
