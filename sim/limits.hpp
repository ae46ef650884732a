// limits.hpp - the bounds of the practice server: what a packet carries, what a client can take,
// and how much is kept for clients that misbehave.
#pragma once

#include <cstddef>

namespace sim
{

/// Bytes before every payload.
constexpr std::size_t header_bytes = 12;

/// Most payload bytes of one packet, in both directions.
constexpr std::size_t max_payload_bytes = 4096;

/// Most bytes of a text payload: clients put a NUL behind it into a buffer of max_payload_bytes.
constexpr std::size_t max_text_bytes = max_payload_bytes - 1;

/// First kind that carries binary data instead of text.
constexpr unsigned first_binary_kind = 200;

/// Most bytes of one run of text that the clients' document reader keeps.
constexpr std::size_t max_value_bytes = 511;

/// Most bytes read from one client before the others get their turn.
constexpr std::size_t max_read_bytes_a_turn = 16384;

/// Most packets that wait for one client besides its transmissions; the next ones are dropped.
constexpr std::size_t max_assured_packets = 1024;

/// Most transmissions kept for replaying to new clients.
constexpr std::size_t max_replay_count = 1000;

/// Most transmissions generated at once when the loop comes late.
constexpr int max_transmissions_a_turn = 100;

/// Most transmissions a minute.
constexpr double max_rate_a_minute = 60000;

/// Milliseconds that a client gets to hang up after it was told of the end.
constexpr int closing_grace_ms = 5000;

/// Milliseconds to wait before accepting again when the system has no descriptor left.
constexpr int accept_retry_ms = 200;

/// Longest field of a service request, in bytes.
constexpr std::size_t max_field_bytes = 64;

/// Most entries that clients may add to the reference data, pager lists and subscriptions during
/// one connection, all taken together.
constexpr std::size_t max_changes_a_client = 500;

/// Most entries of the reference data.
constexpr std::size_t max_reference_entries = 2000;

/// Most pager lists, and most entries of one. So many of the longest entries fill no packet.
constexpr std::size_t max_pager_lists = 500;
constexpr std::size_t max_pager_entries = 40;

/// Longest registration, flight number or airport of a pager entry, in bytes.
constexpr std::size_t max_pager_field_bytes = 30;

/// Most pager lists that one client is told the hits of.
constexpr std::size_t max_pager_lists_a_client = 8;

/// Most subscriptions of mailings.
constexpr std::size_t max_subscriptions = 1000;

/// Most messages that are kept for reports, and most bytes of their texts.
constexpr std::size_t max_archived_messages = 20000;
constexpr std::size_t max_archived_bytes = std::size_t{16} * 1024 * 1024;

/// Longest text of a report, in bytes.
constexpr std::size_t max_report_bytes = std::size_t{1024} * 1024;

/// Most reports under way at the same time.
constexpr std::size_t max_reports_at_once = 8;

/// Most connections to the directory at a time; further ones are hung up on.
constexpr std::size_t max_directory_connections = 64;

/// Most bytes of a request to the directory.
constexpr std::size_t max_directory_request_bytes = 8192;

/// Milliseconds that a client of the directory gets for its request, and again for the answer.
constexpr int directory_ms = 30000;

/// Most pieces of an answer sent before others get their turn.
constexpr int max_directory_sends_a_turn = 64;

/// Largest directory, in bytes.
constexpr std::size_t max_directory_bytes = std::size_t{64} * 1024 * 1024;

/// The latest time of a message, in seconds since 1970: the end of the year 9999.
constexpr double max_time_s = 253402300799;

/// Longest line of JSON, in bytes; no datagram is longer.
constexpr std::size_t max_json_line_bytes = 65536;

/// Most datagrams read before others get their turn.
constexpr int max_datagrams_a_turn = 16;

/// Most texts about broken lines a second; the lines are counted all the same.
constexpr int max_complaints_a_second = 10;

/// Largest file of JSON lines, in bytes.
constexpr std::size_t max_json_file_bytes = std::size_t{64} * 1024 * 1024;

/// Largest replay file, in bytes.
constexpr std::size_t max_replay_file_bytes = std::size_t{16} * 1024 * 1024;

} // namespace sim
