// channel.hpp - a port of the server's, and who it is for those who connect there.
#pragma once

#include "server/base/sockets.hpp"
#include "server/messages/message_filter.hpp"

#include <cstdint>
#include <string>

namespace tovrik
{

struct channel {
    std::string name = {};
    std::string uuid = {}; ///< its identity; clients connect to each identity only once
    message_filter filter = {};
    tcp_listener listener = {};
    std::uint16_t asked_port = 0;      ///< 0: any free one
    std::uint64_t messages = 0;        ///< that passed the filter
    std::uint64_t sent = 0;            ///< messages, to all its clients together
    std::uint64_t left_out_before = 0; ///< for clients that are gone
};

} // namespace tovrik
