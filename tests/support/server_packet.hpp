// server_packet.hpp - packets as the tests build and read them, without client code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

/// Bytes of a packet before its payload.
constexpr std::size_t wire_header_bytes = 12;

struct server_packet {
    std::uint32_t kind = 0;
    std::string payload{};
    std::uint16_t extra = 0;
    std::uint16_t param1 = 0;
    std::uint16_t param2 = 0;

    bool operator==(const server_packet&) const = default;
};

/// A header alone that announces `length` payload bytes, whatever follows.
std::string header_bytes(const server_packet& packet, std::uint16_t length);

/// The packet as it travels. The payload must be below 65,536 bytes.
std::string packet_bytes(const server_packet& packet);

/// Reads a header; sets `length` to the announced payload length. `bytes` holds at least 12 bytes.
server_packet parse_header(std::string_view bytes, std::size_t& length);

/// For the messages of failed comparisons.
std::ostream& operator<<(std::ostream& out, const server_packet& packet);
