// input_options.hpp - where a server's messages come from.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tovrik
{

enum class input_type { udp, tcp_listen, tcp_connect, mqtt, zmq, pipe };

/// A range of IPv4 addresses: those that agree with `address` in the bits of `mask`. Both are in
/// the byte order of this machine.
struct address_range {
    std::uint32_t address = 0;
    std::uint32_t mask = 0; ///< 0: any address
    bool operator==(const address_range&) const = default;
};

/// One input. What its type does not use is left as it is here.
struct input_options {
    input_type type = input_type::udp;
    std::string name = {};          ///< in notices, counters and lines; never empty once read
    std::string bind = "127.0.0.1"; ///< udp, tcp_listen: an IPv4 address
    std::string host = {};          ///< tcp_connect, mqtt: a name or an address
    std::uint16_t port = 0;         ///< udp, tcp_listen, tcp_connect, mqtt
    std::vector<address_range> allow =
        {};                            ///< udp, tcp_listen: whose messages count; none: anyone's
    std::string topic = {};            ///< mqtt: a filter of topics; zmq: a prefix
    std::string user = {};             ///< mqtt; empty: none
    std::string password_file = {};    ///< mqtt: its first line is the password; empty: none
    std::string endpoint = {};         ///< zmq: of a publisher, such as tcp://127.0.0.1:5555
    std::string path = {};             ///< pipe: of a named pipe; "-": standard input
    bool drop_empty_squitters = false; ///< leaves out what ground stations say without a text
    bool operator==(const input_options&) const = default;
};

} // namespace tovrik
