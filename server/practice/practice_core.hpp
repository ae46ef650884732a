// practice_core.hpp - the practice server without its thread: a core, and where its messages come
// from.
//
// practice_server owns the thread, the record of what clients sent, and the one lock under which
// everything here runs.
#pragma once

#include "server/inputs/json_input.hpp"
#include "server/practice/directory.hpp"
#include "server/practice/feed.hpp"
#include "server/services/server_core.hpp"

#include <string_view>

namespace tovrik
{

struct practice_core {
    /// The options must outlive the core.
    explicit practice_core(const server_options& chosen);

    const server_options& options;
    const service_options offered; ///< made of the options
    server_core server;
    feed messages; ///< uses the server's reference data
    directory_service directory;
    json_input json;
    time_point next_transmission = never;
};

/// Opens the sockets, starts the clocks, and makes the messages that new clients get first. Returns
/// an error text, empty on success.
std::string practice_open(practice_core& core);

/// How long the loop may wait for an event, in milliseconds; -1: without a limit.
int practice_wait_ms(const practice_core& core, time_point now);

/// Handles one readiness event of epoll_wait.
void practice_on_event(practice_core& core, int fd);

/// Does all that is due.
void practice_on_time(practice_core& core, time_point now);

/// Takes lines of JSON as if a datagram brought them. Returns the number of messages.
std::size_t practice_take_json(practice_core& core, std::string_view lines);

} // namespace tovrik
