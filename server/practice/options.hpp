// options.hpp - the options of a practice server, all set before it starts.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/services/service_options.hpp"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tovrik
{

/// A deliberate fault in the directory's answers.
enum class directory_fault {
    none,
    silent,        ///< requests are never answered
    endless,       ///< the body is repeated for ever
    no_header_end, ///< no blank line separates header and body
};

struct server_options {
    // Where it listens.
    std::string bind_address = "127.0.0.1"; ///< IPv4, dotted
    std::size_t max_clients = 256;          ///< further ones get 102
    std::uint16_t port = 0;                 ///< 0: any free one

    /// Pause between the packets to one client; 0: none. A client looks for a packet once a second
    /// and takes one at a time. If it finds only a part of one, reading the rest swallows the
    /// beginning of the next, if that has arrived. So the pause is a little longer than a second.
    int pace_ms = 1150;

    // What it says about itself.
    std::string name = "tovriksim"; ///< third field of the uptime
    capability_texts capabilities = {};

    // Which clients it admits. Until it is admitted, a client gets no transmissions.
    std::optional<std::string> password = {}; ///< in clear text; clients send its digest
    std::vector<std::string> known_clients = {"ncursesclient"}; ///< empty: any name is known
    bool ask_identification = false;

    // What every client gets after the capabilities: the greetings, the uptime and, announced, the
    // latest transmissions (max_replay_count at most). If all messages come from receivers and the
    // rate is 0, none of these are made up.
    bool send_uptime = false;
    std::vector<packet> greetings = {};
    std::size_t replay_count = 0;

    // Traffic.
    double rate_per_minute = 0;   ///< its own transmissions; max_rate_per_minute at most
    std::uint64_t seed = 1;       ///< of the generated traffic
    std::size_t queue_limit = 64; ///< of transmissions for one client; the oldest are dropped
    std::vector<std::string> replay_documents = {}; ///< sent in turn instead of generated traffic
    std::vector<transmission> replay_messages = {}; ///< likewise; a time of 0 stands for now
    std::optional<std::time_t> fixed_time = {};     ///< date of generated traffic; none: now
    bool compressed = false;                        ///< transmissions go out compressed
    int tick_every_ms = 0;                          ///< 0: no ticks

    // The directory of servers, over HTTP at the same address.
    std::optional<std::uint16_t> directory_port = {}; ///< none: no directory; 0: any free one
    std::optional<std::string> directory_text = {};   ///< its lines; none: this server alone
    directory_fault directory_answers = directory_fault::none;
    int directory_delay_ms = 0; ///< from a request to its answer

    // What its services do if the capabilities offer them.
    report_answer reports = report_answer::real;
    bool pager_blocked = false; ///< requests about pager lists get "try later"

    // Messages of receivers, one JSON object per line, passed on as they come.
    std::optional<std::uint16_t> json_udp_port = {}; ///< none: no datagrams; 0: any free port
    int json_stream_fd = -1; ///< a pipe, socket or terminal, the caller's; -1: none
    std::function<void(const std::string&)> on_complaint = {}; ///< gets a line about broken input

    // How connections end.
    int close_after_ms = 0; ///< from a client's arrival; 0: never
    std::uint32_t close_kind = kind::closing;

    std::size_t record_limit = 4096; ///< number of packets from clients that are remembered
};

} // namespace tovrik
