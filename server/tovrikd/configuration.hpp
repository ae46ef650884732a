// configuration.hpp - the configuration of tovrikd as a record.
//
// configuration_read makes it of a file; the defaults are here, and nowhere else.
#pragma once

#include "server/inputs/input_options.hpp"
#include "server/messages/message_filter.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tovrik
{

/// The small server for the web: directory of servers, status page, figures.
struct http_configuration {
    std::string bind = "127.0.0.1";
    std::uint16_t port = 0;       ///< 0: there is none
    std::string public_name = {}; ///< in the directory; empty: the address that the asker came to
    bool operator==(const http_configuration&) const = default;
};

struct access_configuration {
    bool identify = false;
    std::string passwords_file = {};    ///< of lines "label:digest"; empty: anyone has access
    unsigned clients_per_address = 100; ///< of one address at a time; 0: any number
    unsigned tries_per_minute = 6;      ///< of one address
    unsigned idle_seconds = 120;        ///< a client without access is told of the end after these
    bool operator==(const access_configuration&) const = default;
};

struct services_configuration {
    bool updates = true;
    bool mailing = true;
    bool reports = true;
    bool pagers = true;
    bool operator==(const services_configuration&) const = default;
};

struct mail_configuration {
    std::string command = "/usr/sbin/sendmail -t -i";
    std::string from = {};                  ///< required with the mailing service
    unsigned at_minute = 10;                ///< of the day, in UTC
    std::vector<std::string> never_to = {}; ///< addresses that get no mail
    bool operator==(const mail_configuration&) const = default;
};

/// Files of values separated by commas; an empty path stands for no file.
struct reference_configuration {
    std::string airlines = {};
    std::string aircraft = {};
    std::string airports = {};
    bool operator==(const reference_configuration&) const = default;
};

/// A port of its own for a part of the traffic.
struct channel_configuration {
    std::string name = {};
    std::uint16_t port = 0;
    message_filter filter = {};
    bool operator==(const channel_configuration&) const = default;
};

/// Another server that the directory lists.
struct peer_configuration {
    std::string host = {};
    std::uint16_t port = 2202;
    std::string name = {};
    std::string location = {};
    std::string description = {};
    bool operator==(const peer_configuration&) const = default;
};

struct configuration {
    std::string name = "tovrikd";
    std::string location = {};    ///< in the directory
    std::string description = {}; ///< in the directory
    std::string bind = "127.0.0.1";
    std::uint16_t port = 2202;
    std::string state_directory = "/var/lib/tovrikd";
    std::size_t max_clients = 1000;
    bool show_reception = false;       ///< station and frequency in the last line of texts
    bool pager_hits_as_errors = false; ///< in bold and with a beep
    http_configuration http = {};
    access_configuration access = {};
    services_configuration services = {};
    mail_configuration mail = {};
    unsigned archive_days = 30;
    reference_configuration reference = {};
    std::vector<input_options> inputs = {};
    std::vector<channel_configuration> channels = {};
    std::vector<peer_configuration> peers = {};
    bool operator==(const configuration&) const = default;
};

} // namespace tovrik
