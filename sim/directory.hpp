// directory.hpp - the list of servers over HTTP: one document, one request a connection.
//
// Owns its listening socket and its connections; the loop and the lock are the server's.
#pragma once

#include "data/owners.hpp"
#include "sim/clock.hpp"
#include "sim/options.hpp"
#include "sim/sockets.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace sim
{

struct directory_connection {
    unique_fd socket;
    time_point end_at = never;    ///< hung up on then, whatever it waits for
    time_point answer_at = never; ///< when the answer begins to go out
    std::string request = {};
    std::string answer = {};     ///< empty until the request is whole
    std::size_t sent_bytes = 0;  ///< of `answer`
    std::size_t repeat_from = 0; ///< what follows is sent again and again; 0: nothing is
    bool answering = false;      ///< the answer is under way
    bool input_ended = false;    ///< the client says no more
    bool gone = false;
};

struct directory_service {
    std::string body;
    tcp_listener listener;                           ///< not open: there is no directory
    std::map<int, directory_connection> connections; ///< by descriptor
};

/// Opens the directory, if the options want one; `server_port` is for the entry that it has by
/// default. An error text, empty when all is well.
std::string directory_open(directory_service& directory, const server_options& options,
                           int epoll_fd, std::uint16_t server_port);

/// Handles a readiness event of one of the directory's descriptors. False when it is none of them.
bool directory_on_event(directory_service& directory, const server_options& options, int epoll_fd,
                        int fd);

/// Does what is due: late answers, connections that took too long.
void directory_on_time(directory_service& directory, int epoll_fd, time_point now);

/// When directory_on_time has something to do next.
time_point directory_next_time(const directory_service& directory);

} // namespace sim
