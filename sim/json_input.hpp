// json_input.hpp - where lines of JSON come from while the server runs: datagrams and a stream.
//
// Owns the datagram socket. The stream's descriptor stays its owner's.
#pragma once

#include "base/owners.hpp"
#include "sim/json_lines.hpp"
#include "sim/options.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace sim
{

struct json_input {
    explicit json_input(const server_options& options);

    unique_fd udp_socket;
    std::uint16_t udp_port = 0; ///< 0: no datagrams are taken
    int stream_fd = -1;         ///< -1: there is none, or it has ended
    json_lines datagram_lines;
    json_lines stream_lines;
    json_lines pushed_lines;
};

/// Opens what the options want. An error text, empty when all is well.
std::string json_open(json_input& input, const server_options& options, int epoll_fd);

/// Reads from a descriptor that is ready. The messages that came; none of other descriptors.
std::vector<transmission> json_on_event(json_input& input, int epoll_fd, int fd);

/// Lines that were broken, whichever way they came.
std::size_t json_broken(const json_input& input);

} // namespace sim
