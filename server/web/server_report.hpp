// server_report.hpp - what a server says about itself to the web, as a record.
//
// The server's loop makes a new one every second or so and hands it over; it is never changed
// afterwards, so any thread may read it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tovrik
{

constexpr std::size_t hours_of_plot = 24;

struct receiver_report {
    std::string name;
    std::string type;             ///< as in the configuration: "udp"
    bool is_connected = false;    ///< udp and listeners: open
    std::time_t last_message = 0; ///< 0: none since the start
    bool is_silent = false;       ///< clients have been told so
    std::uint64_t messages = 0;
    std::uint64_t bytes = 0;
    std::uint64_t broken = 0;  ///< lines that were no message
    std::uint64_t refused = 0; ///< from addresses that are not allowed
    std::uint64_t lost = 0;    ///< dropped by the system
    std::uint64_t reconnections = 0;
};

struct channel_report {
    std::string name;
    std::uint16_t port = 0;
    std::size_t clients = 0;
    std::uint64_t messages = 0; ///< that passed its filter
    std::uint64_t sent = 0;     ///< to all its clients together
    std::uint64_t left_out = 0; ///< of those that clients could not be sent in time
};

/// A server that the directory lists; the first are this one's channels.
struct listed_server {
    std::string host = {}; ///< empty: the address that the asker came to
    std::uint16_t port = 0;
    std::string location = {};
    std::string description = {};
    std::string name = {};
};

struct service_report {
    std::uint64_t updates = 0;
    std::uint64_t pager_lists = 0;
    std::uint64_t pager_hits = 0;
    std::uint64_t subscriptions = 0;
    std::uint64_t mails = 0;        ///< that the mail program took
    std::uint64_t mails_failed = 0; ///< tries that it did not take
    std::uint64_t reports = 0;
};

struct server_report {
    std::string name;
    std::string version;
    std::string uuid;
    std::time_t now = 0;
    std::time_t started = 0;
    bool is_healthy = true;   ///< false: `trouble` says why
    std::string trouble = {}; ///< one line
    std::size_t clients = 0;
    std::size_t max_clients = 0;
    std::uint64_t connections = 0;  ///< since the start
    std::uint64_t refused_full = 0; ///< connections turned away
    std::uint64_t refused_passwords = 0;
    std::uint64_t doubles = 0;         ///< receptions that were merged into others
    std::uint64_t archived = 0;        ///< messages in the archive
    std::uint64_t archive_waiting = 0; ///< messages that are not on disk yet
    std::uint64_t archive_lost = 0;    ///< messages that could not be kept
    std::array<std::uint64_t, hours_of_plot> hourly =
        {}; ///< messages; the last is the present hour
    std::vector<receiver_report> receivers = {};
    std::vector<channel_report> channels = {};
    std::vector<listed_server> listed = {};
    service_report services = {};
};

} // namespace tovrik
