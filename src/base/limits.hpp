// limits.hpp - the bounds that every number from outside meets before it is used.
#pragma once

#include <cstddef>
#include <cstdint>

/// Bytes of a packet's header on the wire.
constexpr std::size_t packet_header_bytes = 12;

/// The payload bytes of a packet that are kept, whatever its length field announces.
constexpr std::size_t packet_max_payload_bytes = 4096;

/// The longest text that the client sends in one packet, in characters.
constexpr std::size_t packet_max_sent_text_bytes = 4092;

/// Kinds up to this one carry text, higher ones binary data.
constexpr std::uint32_t packet_last_text_kind = 199;

/// Decompressed bytes allowed for each unit of a packet's size hint.
constexpr std::size_t decompression_factor = 4;

/// How many placeholders are replaced in one transmission's template.
constexpr int template_max_replacements = 500;

/// The longest text that a template may grow to.
constexpr std::size_t template_max_bytes = 64UL * 1024;

/// How many nodes of the document are visited for one template at most: each placeholder counts all
/// of them, and once more for every so many bytes that it is long.
constexpr std::size_t template_max_visited_nodes = 128UL * 1024;
constexpr std::size_t template_bytes_of_a_visit = 64;

/// How many bytes are searched for one template at most: each placeholder is looked for from where
/// it stands to the end of the text.
constexpr std::size_t template_max_searched_bytes = 2UL * 1024 * 1024;

/// Size of a log file's name, its terminator included.
constexpr std::size_t log_name_bytes = 256;

/// The most compressed bytes of a report that a server may announce.
constexpr std::int64_t report_max_total_bytes = 256LL * 1024 * 1024;

/// The largest size of a report that a server may announce; it may inflate to four times as much.
constexpr std::int64_t report_max_size = 64LL * 1024 * 1024;

/// How much of a directory's response is read.
constexpr std::size_t directory_max_bytes = 16UL * 1024 * 1024;

/// How many servers the list may hold.
constexpr std::int32_t max_servers = 100'000;

/// The largest configuration file that is read or written: enough for as many servers as the list
/// may hold, with all the texts that a directory may send.
constexpr std::size_t config_max_bytes = 64UL * 1024 * 1024;
