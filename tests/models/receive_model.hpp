// receive_model.hpp - how packets come out of a stream: a model written from the receiver's rules.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

constexpr std::size_t receive_model_header_bytes = 12;
constexpr std::size_t receive_model_payload_bytes = 4096;

/// What a call of the receiver says.
enum class receive_model_result : std::int8_t { complete = 1, failed = -1, pending = -2 };

/// One server's stream and the packet that is under way.
struct receive_model {
    std::string stream{};    // sent by the server, not yet read
    bool has_ended = false;  // the server has closed its side
    bool has_packet = false; // a packet is under way
    std::string packet{};    // its header and payload, filled up with NUL
    std::size_t received = 0;
    std::size_t bytes_received = 0; // ever

    /// One call of the receiver.
    receive_model_result receive();

private:
    bool is_ready() const;
    std::string read(std::size_t most);
    std::size_t field(std::size_t first, std::size_t bytes) const;
    receive_model_result drop(receive_model_result result);
    receive_model_result receive_payload();
};
