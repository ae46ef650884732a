// sample_traffic.cpp - see sample_traffic.hpp.
#include "bench/sample_traffic.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <zlib.h>

namespace
{

constexpr std::uint32_t plain_kind = 40;
constexpr std::uint32_t text_kind = 64;
constexpr std::uint32_t compressed_kind = 204;
constexpr int waypoints = 24;

constexpr const char* head = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" ?>\n"
                             "<tovrik>\n"
                             "<ACARS>\n"
                             "<ACARSMode>2</ACARSMode>\n"
                             "<AircraftReg>D-AIQA</AircraftReg>\n"
                             "<MessageLabel>H1</MessageLabel>\n"
                             "<BlockID>7</BlockID>\n"
                             "<MessageNumber>M07A</MessageNumber>\n"
                             "<FlightNumber>LH0400</FlightNumber>\n"
                             "<MessageDate>\n"
                             "<Day>17</Day>\n<Month>03</Month>\n<Year>2024</Year>\n"
                             "<Hour>14</Hour>\n<Minute>25</Minute>\n"
                             "</MessageDate>\n"
                             "<Authorized>\n<MessageContent>";
constexpr const char* short_content = "#DFBPOSN50123E008456,RID42,142510,360,NORKU,143102,OSMAX,"
                                      "143844,M48,27142,120,/TS142510,170324\n"
                                      "ETA EDDF 1512 FOB 0124 GATE B24 PAX 172\n"
                                      "REQ CONNEX GATES AND WX EDDF EDDM";
constexpr const char* between = "</MessageContent>\n</Authorized>\n"
                                "</ACARS>\n"
                                "<FlightRouting>\n<From>EDDF</From>\n<To>KJFK</To>\n"
                                "</FlightRouting>\n"
                                "<Extended>\n<Aircraft>Airbus A320-211</Aircraft>\n"
                                "<Operator>Lufthansa</Operator>\n";
constexpr const char* tail = "</Extended>\n"
                             "<Contacts>42 contacts with this aircraft</Contacts>\n"
                             "<ContactData>\n<DailyFlights>317</DailyFlights>\n</ContactData>\n"
                             "</tovrik>\n";

/// A text of several lines, as long as the client keeps of one element.
std::string make_long_content()
{
    std::string content;
    for (int line = 1; line <= 9; ++line) {
        char text[128];
        std::snprintf(text, sizeof text, "FPN/RI:DA:EDDF:AA:KJFK:F:WP%02d,N5%dE00%d.UM605..NORKU%s",
                      line, line, line, line < 9 ? "\n" : "");
        content += text;
    }
    return content;
}

std::string make_waypoint_elements()
{
    std::string elements;
    for (int number = 1; number <= waypoints; ++number) {
        char text[160];
        std::snprintf(text, sizeof text,
                      "<Waypoint%02d>N5%02d12.4 E008%02d.6 FL3%02d</Waypoint%02d>\n", number,
                      number, number, number, number);
        elements += text;
    }
    return elements;
}

packet_buffer make_packet(packet_header header, const void* payload, std::size_t length)
{
    packet_buffer packet = {};
    if (length >= packet_max_payload_bytes) {
        std::fputs("a sample does not fit into a packet\n", stderr);
        std::abort();
    }
    header.length = static_cast<std::uint16_t>(length);
    packet_header_write(packet.header, header);
    std::memcpy(packet.payload, payload, length);
    return packet;
}

std::string make_short_document()
{
    return std::string{head}.append(short_content).append(between).append(tail);
}

std::string make_long_document()
{
    std::string document{head};
    document.append(make_long_content())
        .append(between)
        .append(make_waypoint_elements())
        .append(tail);
    return document;
}

} // namespace

std::span<const sample_document> sample_documents()
{
    static const sample_document samples[] = {{"1kB", make_short_document()},
                                              {"3kB", make_long_document()}};
    return samples;
}

packet_buffer plain_packet(const std::string& document)
{
    return make_packet({plain_kind, 0, 0, 0, 0}, document.data(), document.size());
}

packet_buffer compressed_packet(const std::string& document)
{
    unsigned char bytes[packet_max_payload_bytes];
    uLongf length = sizeof bytes;
    const auto* text = reinterpret_cast<const unsigned char*>(document.data());
    if (compress(bytes, &length, text, document.size()) != Z_OK)
        length = packet_max_payload_bytes;
    const auto size_hint = static_cast<std::uint16_t>((document.size() + decompression_factor - 1) /
                                                      decompression_factor);
    return make_packet({compressed_kind, 0, size_hint, 0, 0}, bytes, length);
}

packet_buffer text_packet(const std::string& text)
{
    return make_packet({text_kind, 0, 0, 0, 0}, text.data(), text.size());
}
