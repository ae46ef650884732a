// configuration_limits.hpp - the bounds of what tovrikd's configuration and the files that it names
// may hold.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tovrik
{

/// Maximum size of the configuration, and of the file of passwords.
constexpr std::size_t max_configuration_bytes = std::size_t{1024} * 1024;

/// Maximum number of mistakes of one file that are told; those beyond are counted.
constexpr std::size_t max_told_mistakes = 100;

/// Maximum numbers of inputs, channels, peers, and values of one list.
constexpr std::int64_t max_inputs = 64;
constexpr std::int64_t max_channels = 32;
constexpr std::int64_t max_peers = 200;
constexpr std::int64_t max_list_values = 200;

/// Maximum lengths of texts, in bytes: of what clients see, of one value of a filter, of a host's
/// name, of anything else.
constexpr std::int64_t max_name_bytes = 60;
constexpr std::int64_t max_shown_bytes = 200;
constexpr std::int64_t max_filter_bytes = 64;
constexpr std::int64_t max_host_bytes = 253;
constexpr std::int64_t max_other_bytes = 1000;

constexpr std::int64_t max_port = 65535;
constexpr std::int64_t max_client_count = 4096;
constexpr std::int64_t max_tries_per_minute = 1000;
constexpr std::int64_t max_idle_seconds = 86400;
constexpr std::int64_t max_archive_days = 3650;

/// Maximum number of passwords, and maximum length of a label.
constexpr std::size_t max_passwords = 4096;
constexpr std::size_t max_label_bytes = 40;

/// Maximum size of a reference file, of one of its records, and of the entries of all of them.
constexpr std::size_t max_reference_file_bytes = std::size_t{256} * 1024 * 1024;
constexpr std::size_t max_csv_record_bytes = std::size_t{64} * 1024;
constexpr std::size_t max_file_reference_entries = 1'000'000;

} // namespace tovrik
