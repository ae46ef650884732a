// decompression.hpp - inflates the zlib data of compressed transmissions and reports.
#pragma once

#include "base/owners.hpp"

#include <cstddef>
#include <cstdint>

/// Inflates zlib data. size_hint: a quarter of the bytes that the result may have.
/// The bytes, followed by a zero. Null when out of memory, and null after a report and a beep when
/// zlib refuses the data.
heap_bytes decompress_packet(const unsigned char* data, std::uint32_t size_hint,
                             std::size_t data_length);
