// service_options.hpp - what a server offers to its clients, and how it treats them.
#pragma once

#include "server/protocol/capabilities.hpp"
#include "server/protocol/packet.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
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
    std::optional<std::string> password = {};    ///< in clear text; clients send its digest
    std::vector<std::string> known_clients = {}; ///< empty: any name is known
    bool ask_identification = false;

    // What every client gets after the capabilities: the greetings, the uptime and, announced, the
    // latest transmissions (max_replay_count at most).
    bool send_uptime = false;
    std::vector<packet> greetings = {};
    std::size_t replay_count = 0;

    std::size_t queue_limit = 64; ///< of transmissions for one client; the oldest are dropped
    bool compressed = false;      ///< transmissions go out compressed
    int tick_every_ms = 0;        ///< 0: no ticks

    // What its services do if the capabilities offer them.
    report_answer reports = report_answer::real;
    bool pager_blocked = false; ///< requests about pager lists get "try later"

    // How connections end.
    int close_after_ms = 0; ///< from a client's arrival; 0: never
    std::uint32_t close_kind = kind::closing;
};

} // namespace tovrik
