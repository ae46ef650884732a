// daemon.hpp - tovrikd while it runs: its configuration, its server, and what feeds and keeps it.
//
// Everything here runs in the one thread of main(), which also owns the signals.
#pragma once

#include "server/base/even_clock.hpp"
#include "server/base/line_writer.hpp"
#include "server/inputs/doubles.hpp"
#include "server/inputs/input_set.hpp"
#include "server/inputs/joining.hpp"
#include "server/mail/mailing.hpp"
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
    mailing mails;
    input_set inputs;
    joining joined;
    doubles known;
    web_service web;

    std::time_t started = 0;
    even_clock clock;               ///< looked at each second
    time_point next_second = never; ///< the report for the web is made, notices are looked for
    time_point next_hour = never;   ///< the journal gets its counts, old messages are forgotten
};

} // namespace tovrik
