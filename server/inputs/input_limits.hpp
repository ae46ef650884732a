// input_limits.hpp - the bounds of a server's inputs.
#pragma once

#include <chrono>
#include <cstddef>

namespace tovrik
{

/// Bytes that the system is asked to keep for a UDP input while the server is busy.
constexpr int udp_receive_buffer_bytes = 8 * 1024 * 1024;

/// Maximum number of datagrams that are taken from the system in one turn, and number of those that
/// one call takes.
constexpr std::size_t max_datagrams_per_drain = 20000;
constexpr std::size_t datagrams_per_call = 64;

/// Maximum number of blocks, and of their bytes, that wait to be read as JSON. A block is a
/// datagram or a message of a broker or a publisher.
constexpr std::size_t max_waiting_blocks = 50000;
constexpr std::size_t max_waiting_bytes = std::size_t{32} * 1024 * 1024;

/// Maximum number of bytes that are read as JSON before others get their turn.
constexpr std::size_t max_json_bytes_per_turn = std::size_t{128} * 1024;

/// Maximum size of a block from a broker or a publisher.
constexpr std::size_t max_block_bytes = std::size_t{1024} * 1024;

/// Maximum number of senders that are connected to one input at the same time.
constexpr std::size_t max_senders = 64;

/// How long a server may take to accept a connection.
constexpr std::chrono::seconds connect_patience{10};

/// The pause before the first attempt to connect again. Each further one is twice as long as the
/// one before, up to the longest.
constexpr std::chrono::seconds first_retry_pause{1};
constexpr std::chrono::seconds longest_retry_pause{60};

/// When the system asks a silent peer whether it is still there: after how much silence, how often,
/// and after how many questions without an answer it is gone.
constexpr int keepalive_idle_s = 60;
constexpr int keepalive_interval_s = 15;
constexpr int keepalive_count = 4;

/// How long the end of the inputs waits for their threads. A thread that looks up a name longer
/// than that is left behind.
constexpr std::chrono::seconds thread_end_patience{1};

/// An input is silent when no message has come for this long.
constexpr std::chrono::minutes silence_after{15};

} // namespace tovrik
