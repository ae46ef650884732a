// packet.cpp - see packet.hpp.
#include "net/packet.hpp"

#include <algorithm>

namespace
{

std::uint16_t read_16(const unsigned char* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

void write_16(unsigned char* bytes, std::uint32_t number)
{
    bytes[0] = static_cast<unsigned char>(number & 0xFF);
    bytes[1] = static_cast<unsigned char>((number >> 8) & 0xFF);
}

} // namespace

packet_header packet_header_read(const unsigned char (&bytes)[packet_header_bytes])
{
    const auto kind_high = static_cast<std::uint32_t>(read_16(bytes + 2));
    return {read_16(bytes) | (kind_high << 16), read_16(bytes + 4), read_16(bytes + 6),
            read_16(bytes + 8), read_16(bytes + 10)};
}

void packet_header_write(unsigned char (&bytes)[packet_header_bytes], const packet_header& header)
{
    write_16(bytes, header.kind);
    write_16(bytes + 2, header.kind >> 16);
    write_16(bytes + 4, header.length);
    write_16(bytes + 6, header.extra);
    write_16(bytes + 8, header.param1);
    write_16(bytes + 10, header.param2);
}

std::size_t packet_payload_length(const packet_header& header)
{
    return std::min<std::size_t>(header.length, packet_max_payload_bytes);
}
