// limits.hpp - the bounds that every number from outside meets before it is used.
#pragma once

#include <cstddef>
#include <cstdint>

/// Bytes of a packet's header on the wire.
constexpr std::size_t packet_header_bytes = 12;

/// Most payload bytes of a packet that are kept, whatever its length field announces.
constexpr std::size_t packet_max_payload_bytes = 4096;

/// Most characters of a text that the client sends in one packet.
constexpr std::size_t packet_max_sent_text_bytes = 4092;

/// Kinds up to this one carry text, higher ones binary data.
constexpr std::uint32_t packet_last_text_kind = 199;

/// Decompressed bytes allowed for each unit of a packet's size hint.
constexpr std::size_t decompression_factor = 4;

/// Most placeholders that one transmission's template may have replaced.
constexpr int template_max_replacements = 500;

/// Longest text that a template may grow to.
constexpr std::size_t template_max_bytes = 64UL * 1024;

/// Room for a log file's name, its terminator included.
constexpr std::size_t log_name_bytes = 256;

/// Most compressed bytes of a report that a server may announce.
constexpr std::int64_t report_max_total_bytes = 256LL * 1024 * 1024;

/// Largest size of a report that a server may announce; it may inflate to four times as much.
constexpr std::int64_t report_max_size = 64LL * 1024 * 1024;

/// Most bytes of a directory's answer that are read.
constexpr std::size_t directory_max_bytes = 16UL * 1024 * 1024;

/// Most servers that the list may hold.
constexpr std::int32_t servers_max = 100'000;

/// Largest configuration file that is read, and that is written: room for as many servers as the
/// list may hold, with all the texts that a directory may send.
constexpr std::size_t config_max_bytes = 64UL * 1024 * 1024;
