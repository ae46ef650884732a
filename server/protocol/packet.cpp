// packet.cpp - see packet.hpp.
#include "server/protocol/packet.hpp"

#include "server/base/limits.hpp"
#include "server/base/zlib_bytes.hpp"

#include <algorithm>
#include <limits>

namespace tovrik
{
namespace
{

/// Size of a reader's decompression buffer for each unit of the size hint.
constexpr std::size_t bytes_per_hint = 4;

/// Positions of the fields in a header.
constexpr std::size_t kind_at = 0;
constexpr std::size_t length_at = 4;
constexpr std::size_t extra_at = 6;
constexpr std::size_t param1_at = 8;
constexpr std::size_t param2_at = 10;

template <typename number> void append_number(std::string& bytes, number value)
{
    for (unsigned shift = 0; shift < 8 * sizeof value; shift += 8) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> shift & 0xFF);
    }
}

template <typename number> number read_number(std::string_view bytes, std::size_t position)
{
    std::uint64_t value = 0;
    for (std::size_t i = sizeof(number); i-- > 0;) {
        value = value << 8 | static_cast<unsigned char>(bytes[position + i]);
    }
    return static_cast<number>(value);
}

} // namespace

std::string encode_packet(const packet& sent)
{
    const std::size_t length = std::min(sent.payload.size(), max_payload_bytes);
    std::string bytes;
    bytes.reserve(header_bytes + length);
    append_number(bytes, sent.kind);
    append_number(bytes, static_cast<std::uint16_t>(length));
    append_number(bytes, sent.extra);
    append_number(bytes, sent.param1);
    append_number(bytes, sent.param2);
    bytes.append(sent.payload, 0, length);
    return bytes;
}

wire_header decode_header(std::string_view bytes)
{
    return {.kind = read_number<std::uint32_t>(bytes, kind_at),
            .length = read_number<std::uint16_t>(bytes, length_at),
            .extra = read_number<std::uint16_t>(bytes, extra_at),
            .param1 = read_number<std::uint16_t>(bytes, param1_at),
            .param2 = read_number<std::uint16_t>(bytes, param2_at)};
}

packet replay_announcement_packet(std::uint32_t count)
{
    return {.kind = kind::replay_announcement,
            .payload = std::to_string(count),
            .param1 = static_cast<std::uint16_t>(count & 0xFFFF),
            .param2 = static_cast<std::uint16_t>(count >> 16)};
}

std::optional<packet> plain_transmission(std::string_view xml)
{
    if (xml.empty() || xml.size() > max_text_bytes)
        return std::nullopt;
    return packet{.kind = kind::transmission, .payload = std::string{xml}};
}

std::optional<packet> compressed_transmission(std::string_view xml)
{
    const std::size_t hint = xml.size() / bytes_per_hint + 1;
    if (xml.empty() || hint > std::numeric_limits<std::uint16_t>::max())
        return std::nullopt;
    std::string compressed = zlib_bytes(xml);
    if (compressed.empty() || compressed.size() > max_payload_bytes)
        return std::nullopt;
    return packet{.kind = kind::compressed_transmission,
                  .payload = std::move(compressed),
                  .extra = static_cast<std::uint16_t>(hint)};
}

} // namespace tovrik
