// packet.hpp - the unit of the protocol: a header of 12 bytes, little-endian, and up to 4096 bytes
// of payload.
//
// Owns the wire layout and the numbers of the kinds that this server knows; sends nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovrik
{

/// Message kinds, by the side that sends them.
namespace kind
{
// From a client.
constexpr std::uint32_t good_bye = 2;
constexpr std::uint32_t add_flight = 30;
constexpr std::uint32_t add_airline = 31;
constexpr std::uint32_t add_airport = 33;
constexpr std::uint32_t add_label = 34;
constexpr std::uint32_t add_aircraft = 38;
constexpr std::uint32_t subscription = 60;
constexpr std::uint32_t report_style = 66;
constexpr std::uint32_t report_request = 70;
constexpr std::uint32_t pager_add = 77;
constexpr std::uint32_t password_digest = 81;
constexpr std::uint32_t pager_remove = 88;
constexpr std::uint32_t uplink_setting = 95;
constexpr std::uint32_t client_version = 101;
constexpr std::uint32_t heartbeat = 148;
constexpr std::uint32_t transmission_form = 151;
// From either: the question, and the client's name or the list as its answer.
constexpr std::uint32_t identification = 85;
constexpr std::uint32_t pager_list = 89;
// From the server.
constexpr std::uint32_t closing = 3;
constexpr std::uint32_t tick = 5;
constexpr std::uint32_t replay_announcement = 27;
constexpr std::uint32_t update_accepted = 35;
constexpr std::uint32_t update_refused = 36;
constexpr std::uint32_t transmission = 40;
constexpr std::uint32_t capabilities = 41;
constexpr std::uint32_t banner = 64;
constexpr std::uint32_t report_started = 71;
constexpr std::uint32_t report_busy = 72;
constexpr std::uint32_t report_empty = 73;
constexpr std::uint32_t report_header = 74;
constexpr std::uint32_t pager_blocked = 76;
constexpr std::uint32_t pager_done = 78;
constexpr std::uint32_t pager_failed = 79;
constexpr std::uint32_t password_accepted = 82;
constexpr std::uint32_t password_refused = 83;
constexpr std::uint32_t identification_accepted = 86;
constexpr std::uint32_t identification_refused = 87;
constexpr std::uint32_t news = 90;
constexpr std::uint32_t closing_for_maintenance = 100;
constexpr std::uint32_t closing_when_full = 102;
constexpr std::uint32_t notice = 103;
constexpr std::uint32_t updates_forbidden = 106;
constexpr std::uint32_t error_text = 108;
constexpr std::uint32_t uptime = 153;
constexpr std::uint32_t compressed_transmission = 204;
constexpr std::uint32_t report_piece = 205;
} // namespace kind

/// One packet. `extra` is the size hint of a compressed payload and 0 in all others. Clients drop a
/// packet without a payload unread, so a packet must have at least one byte to be noticed.
struct packet {
    std::uint32_t kind = 0;
    std::string payload = {};
    std::uint16_t param1 = 0;
    std::uint16_t param2 = 0;
    std::uint16_t extra = 0;
};

/// The fields of a header as they came from the wire; `length` is the announced payload size.
struct wire_header {
    std::uint32_t kind;
    std::uint16_t length;
    std::uint16_t extra;
    std::uint16_t param1;
    std::uint16_t param2;
};

/// Header and payload as they go over the wire. The payload is cut at max_payload_bytes.
std::string encode_packet(const packet& sent);

/// Reads a header from the start of `bytes`, which must have at least header_bytes.
wire_header decode_header(std::string_view bytes);

/// The packet of kind 27. `count` is split over both parameters, the low 16 bits first.
packet replay_announcement_packet(std::uint32_t count);

/// `xml` as a plain transmission. Nothing if it is empty or longer than max_text_bytes.
std::optional<packet> plain_transmission(std::string_view xml);

/// `xml` as a compressed transmission. Its size hint counts a terminator for the reader's buffer.
/// Nothing if `xml` is empty, compresses to more than max_payload_bytes or is too large for the
/// hint.
std::optional<packet> compressed_transmission(std::string_view xml);

} // namespace tovrik
