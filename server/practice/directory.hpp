// directory.hpp - the list of servers over HTTP: one document, one request per connection.
//
// Owns its listening socket and its connections. The loop and the lock are the server's.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/base/sockets.hpp"
#include "server/practice/options.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace tovrik
{

struct directory_connection {
    unique_fd socket;
    time_point end_at = never;    ///< closed then, whatever it waits for
    time_point answer_at = never; ///< sending the answer begins then
    std::string request = {};
    std::string answer = {};     ///< empty until the request is complete
    std::size_t sent_bytes = 0;  ///< of `answer`
    std::size_t repeat_from = 0; ///< sending starts again from here; 0: the answer ends
    bool answering = false;      ///< the answer is being sent
    bool input_ended = false;    ///< the client has shut down its sending side
    bool gone = false;           ///< to be removed
};

struct directory_service {
    std::uint16_t server_port = 0;                   ///< for the default entry
    tcp_listener listener;                           ///< not open: there is no directory
    std::map<int, directory_connection> connections; ///< by descriptor
};

/// Opens the directory if the options ask for one. `server_port` is for the default entry, which
/// names the server itself, at the address that the asker came to. Returns an error text, empty on
/// success.
std::string directory_open(directory_service& directory, const server_options& options,
                           int epoll_fd, std::uint16_t server_port);

/// Handles a readiness event of one of the directory's descriptors. False if `fd` is none of them.
bool directory_on_event(directory_service& directory, const server_options& options, int epoll_fd,
                        int fd);

/// Does what is due: sends delayed answers and closes connections whose time is over.
void directory_on_time(directory_service& directory, int epoll_fd, time_point now);

/// When directory_on_time has something to do next.
time_point directory_next_time(const directory_service& directory);

} // namespace tovrik
