// packet.hpp - what a packet is made of, in both directions: a header and a payload.
#pragma once

#include "base/limits.hpp"

#include <cstddef>
#include <cstdint>

/// The twelve bytes before a payload, all numbers little-endian on the wire.
struct packet_header {
    std::uint32_t kind;   // what the packet means
    std::uint16_t length; // payload bytes that follow
    std::uint16_t extra;  // size hint of compressed data; 0 in everything that the client sends
    std::uint16_t param1;
    std::uint16_t param2;
};

/// A packet as it lies on the wire: header bytes, then payload.
struct packet_buffer {
    unsigned char header[packet_header_bytes];
    unsigned char payload[packet_max_payload_bytes];
};

/// A whole packet from a server, as those who act on it see it. Borrowed from its buffer.
struct packet_view {
    packet_header header;
    const unsigned char* payload; // packet_payload_length(header) bytes
    const char* text;             // the same, and NUL-terminated if the kind carries text
};

/// The header's numbers, from its bytes.
packet_header packet_header_read(const unsigned char (&bytes)[packet_header_bytes]);

/// The header's bytes, from its numbers.
void packet_header_write(unsigned char (&bytes)[packet_header_bytes], const packet_header& header);

/// Payload bytes that a received packet really holds, whatever its length field announces.
std::size_t packet_payload_length(const packet_header& header);
