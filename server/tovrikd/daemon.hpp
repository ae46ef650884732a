// daemon.hpp - tovrikd while it runs: its configuration, its server, and what feeds and keeps it.
//
// Everything here runs in the one thread of main(), which also owns the signals.
#pragma once

#include "server/base/line_writer.hpp"
#include "server/inputs/doubles.hpp"
#include "server/inputs/input_set.hpp"
#include "server/inputs/joining.hpp"
#include "server/services/server_core.hpp"
#include "server/storage/kept_store.hpp"
#include "server/tovrikd/configuration.hpp"
#include "server/tovrikd/passwords.hpp"
#include "server/web/web_service.hpp"

#include <string>
#include <vector>

namespace tovrik
{

struct daemon {
    /// `journal` must outlive the daemon.
    explicit daemon(line_writer& journal);

    line_writer& journal;
    std::string configuration_path;
    configuration chosen;
    std::vector<password> passwords;
    service_options offered; ///< made of the two above
    server_core server;
    kept_store kept;
    input_set inputs;
    joining joined;
    doubles known;
    web_service web;

    std::time_t started = 0;
    time_point next_second = never; ///< the report for the web is made, notices are looked for
    time_point next_hour = never;   ///< the journal gets its counts, old messages are forgotten
};

/// Starts everything that a configuration asks for. Returns what is wrong, one line each; the
/// daemon must then be closed. Inputs that cannot be opened are only told: they are tried again.
std::vector<std::string> daemon_open(daemon& running, const std::string& configuration_path);

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
