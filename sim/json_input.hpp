// json_input.hpp - where lines of JSON come from while the server runs: datagrams and a stream.
//
// Owns the datagram socket. The caller of the server owns the stream's descriptor.
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
    std::uint16_t udp_port = 0; ///< 0: no datagrams are received
    int stream_fd = -1;         ///< -1: there is no stream, or it has ended
    json_lines datagram_lines;
    json_lines stream_lines;
    json_lines pushed_lines;
};

/// Opens the inputs that the options ask for. Returns an error text, empty on success.
std::string json_open(json_input& input, const server_options& options, int epoll_fd);

/// Reads from a descriptor that is ready. Returns the messages that came; none if the descriptor is
/// not one of the input's.
std::vector<transmission> json_on_event(json_input& input, int epoll_fd, int fd);

/// The number of broken lines, from all inputs together.
std::size_t json_broken(const json_input& input);

} // namespace sim
