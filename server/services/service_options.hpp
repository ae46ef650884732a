// service_options.hpp - what a server offers to its clients, and how it treats them.
#pragma once

#include "server/protocol/capabilities.hpp"
#include "server/protocol/packet.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// How requests for reports are answered.
enum class report_answer {
    real,       ///< a report if there were messages on that day
    busy,       ///< always "all report processes are busy"
    empty,      ///< always "no messages"
    corrupt,    ///< a report whose data cannot be decompressed
    tight,      ///< a report whose announced size is too small to decompress into
    unfinished, ///< a report without its last piece
};

/// Gives the label of the password with a digest; an empty text if there is none.
using password_check = std::function<std::string(std::string_view digest)>;

struct service_options {
    std::size_t max_clients = 256; ///< of all channels together; further ones get 102

    /// Pause between the packets to one client; 0: none. A client looks for a packet once a second
    /// and takes one at a time. If it finds only a part of one, reading the rest swallows the
    /// beginning of the next, if that has arrived. So the pause is a little longer than a second.
    int pace_ms = 1150;

    // What it says about itself.
    std::string name = {}; ///< third field of the uptime, and in reports
    capability_texts capabilities = {};

    // Which clients it admits. Until it is admitted, a client gets no transmissions.
    password_check label_of_digest = {}; ///< empty: no password is needed
    unsigned tries_per_minute = 0;       ///< wrong passwords of one address; 0: any number
    int access_within_ms = 0;            ///< clients without access are told of the end; 0: never
    std::size_t max_clients_of_address = 0;      ///< 0: as many as there may be
    std::vector<std::string> known_clients = {}; ///< empty: any name is known
    bool ask_identification = false;

    // What every client gets after the capabilities: the greetings, the uptime and, announced, the
    // latest transmissions (max_replay_count at most).
    bool send_uptime = false;
    std::vector<packet> greetings = {};
    std::size_t replay_count = 0;

    std::size_t queue_limit = 64; ///< of transmissions for one client; see backlog_add
    int late_after_ms = 0;        ///< a transmission that waited so long is left out; 0: never
    bool tell_left_out = false;   ///< clients are told once a minute how many were left out
    bool compressed = false;      ///< transmissions go out compressed
    int tick_every_ms = 0;        ///< 0: no ticks

    // What its services do if the capabilities offer them.
    report_answer reports = report_answer::real;
    bool refuses_updates = false; ///< although clients, who need it for mailings, think otherwise
    bool pager_hits_as_errors = false; ///< in bold and with a beep
    bool pager_blocked = false;        ///< requests about pager lists get "try later"

    // How connections end.
    int close_after_ms = 0; ///< from a client's arrival; 0: never
    std::uint32_t close_kind = kind::closing;
};

} // namespace tovrik
