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

/// Largest replay file, in bytes.
constexpr std::size_t max_replay_file_bytes = std::size_t{16} * 1024 * 1024;

} // namespace sim
