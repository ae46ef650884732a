// web_connections.hpp - the connections of those who ask over HTTP.
//
// Owns the listening socket, the connections and what waits for them. Knows nothing of the pages.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/base/sockets.hpp"
#include "server/web/http_desk.hpp"

#include <map>
#include <string>

namespace tovrik
{

struct web_connection {
    unique_fd socket;
    time_point begun_at = {};
    time_point end_at = never; ///< cut then, whatever it waits for
    std::string request = {};
    std::string answer = {};    ///< empty until the request is whole
    std::size_t sent_bytes = 0; ///< of `answer`
    bool closing = false;       ///< all is sent; the asker closes
    bool gone = false;          ///< to be removed
};

struct web_connections {
    tcp_listener listener;
    unique_fd epoll;
    std::map<int, web_connection> askers = {}; ///< by descriptor
};

/// Opens the listening socket. Returns an error text, empty on success.
std::string web_connections_open(web_connections& connections, const std::string& address,
                                 std::uint16_t port);

/// Takes the next step of the connection, or connections, that `fd` stands for.
void web_connections_on_event(web_connections& connections, http_desk& desk, int fd);

/// Removes the connections that have ended and those whose time is over; those that had not asked
/// are told so.
void web_connections_on_time(web_connections& connections, time_point now);

/// When web_connections_on_time has something to do next.
time_point web_connections_next_time(const web_connections& connections);

} // namespace tovrik
