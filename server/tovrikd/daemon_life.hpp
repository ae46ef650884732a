// daemon_life.hpp - how tovrikd starts, what it does when, how it changes and how it ends.
#pragma once

#include "server/tovrikd/daemon.hpp"

#include <string>
#include <vector>

namespace tovrik
{

/// Why a daemon does not start.
struct daemon_failure {
    std::vector<std::string> lines; ///< none: it has started
    bool is_configuration = false;  ///< it would start with another configuration
};

/// Starts everything that a configuration asks for. Inputs that cannot be opened are only told:
/// they are tried again.
daemon_failure daemon_open(daemon& running, const std::string& configuration_path);

/// How long to wait for an event, in milliseconds; -1: without a limit.
int daemon_wait_ms(const daemon& running, time_point now);

/// Handles one readiness event.
void daemon_on_event(daemon& running, int fd, time_point now);

/// Does all that is due.
void daemon_on_time(daemon& running, time_point now);

/// Reads the configuration again and takes it. If there is anything wrong with it, the journal is
/// told, and everything stays as it is. Clients stay connected, but for those of channels that are
/// gone.
void daemon_reload(daemon& running, time_point now);

/// Tells all clients of the end. They have some seconds to read it: see daemon_is_done.
void daemon_say_good_bye(daemon& running);

/// Whether all clients have gone.
bool daemon_is_done(const daemon& running);

/// Closes everything, and waits until what was taken in is on disk.
void daemon_close(daemon& running);

} // namespace tovrik
