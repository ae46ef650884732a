// channel.hpp - a port of the server's, and who it is for those who connect there.
#pragma once

#include "server/base/sockets.hpp"

#include <string>

namespace tovrik
{

struct channel {
    std::string uuid; ///< its identity; clients connect to each identity only once
    tcp_listener listener;
};

} // namespace tovrik
