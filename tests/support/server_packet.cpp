// server_packet.cpp - packets as the tests build and read them.
#include "support/server_packet.hpp"

#include <ostream>

namespace
{

void append_number(std::string& bytes, std::uint32_t value, int width)
{
    for (int at = 0; at < width; ++at)
        bytes += static_cast<char>(value >> 8 * at & 0xFF);
}

std::uint32_t read_number(std::string_view bytes, std::size_t place, std::size_t width)
{
    std::uint32_t value = 0;
    for (std::size_t at = width; at-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + at]);
    return value;
}

} // namespace

std::string header_bytes(const server_packet& packet, std::uint16_t length)
{
    std::string bytes;
    append_number(bytes, packet.kind, 4);
    append_number(bytes, length, 2);
    append_number(bytes, packet.extra, 2);
    append_number(bytes, packet.param1, 2);
    append_number(bytes, packet.param2, 2);
    return bytes;
}

std::string packet_bytes(const server_packet& packet)
{
    return header_bytes(packet, static_cast<std::uint16_t>(packet.payload.size())) + packet.payload;
}

server_packet parse_header(std::string_view bytes, std::size_t& length)
{
    server_packet packet;
    packet.kind = read_number(bytes, 0, 4);
    length = read_number(bytes, 4, 2);
    packet.extra = static_cast<std::uint16_t>(read_number(bytes, 6, 2));
    packet.param1 = static_cast<std::uint16_t>(read_number(bytes, 8, 2));
    packet.param2 = static_cast<std::uint16_t>(read_number(bytes, 10, 2));
    return packet;
}

std::ostream& operator<<(std::ostream& out, const server_packet& packet)
{
    return out << "kind " << packet.kind << " extra " << packet.extra << " parameters "
               << packet.param1 << ' ' << packet.param2 << " payload \"" << packet.payload << '"';
}
