// json_input.hpp - where lines of JSON come from while the server runs: datagrams and a stream.
//
// Owns the datagram socket. The caller of the server owns the stream's descriptor.
#pragma once

#include "base/owners.hpp"
#include "server/inputs/json_lines.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tovrik
{

struct json_input_options {
    std::string bind_address = "127.0.0.1";        ///< IPv4, dotted
    std::optional<std::uint16_t> udp_port = {};    ///< none: no datagrams; 0: any free port
    int stream_fd = -1;                            ///< the caller's; -1: no stream
    json_lines::complaint_taker on_complaint = {}; ///< gets a line about broken input
};

struct json_input {
    explicit json_input(json_input_options chosen);

    json_input_options options;
    unique_fd udp_socket;
    std::uint16_t udp_port = 0; ///< 0: no datagrams are received
    int stream_fd = -1;         ///< -1: there is no stream, or it has ended
    bool stream_ended = false;
    std::string stream_error; ///< why it ended, if a read failed
    json_lines datagram_lines;
    json_lines stream_lines;
    json_lines pushed_lines;
};

/// Opens the inputs that the options ask for. Returns an error text, empty on success.
std::string json_open(json_input& input, int epoll_fd);

/// Reads from a descriptor that is ready. Returns the messages that came; none if the descriptor is
/// not one of the input's.
std::vector<transmission> json_on_event(json_input& input, int epoll_fd, int fd);

/// The number of broken lines, from all inputs together.
std::size_t json_broken(const json_input& input);

} // namespace tovrik
