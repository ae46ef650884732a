// decompression.cpp - see decompression.hpp.
#include "net/decompression.hpp"

#include "base/limits.hpp"
#include "ui/pane.hpp"

#include <zlib.h>

heap_bytes decompress_packet(const unsigned char* data, std::uint32_t size_hint,
                             std::size_t data_length)
{
    const std::size_t capacity = decompression_factor * size_hint;
    heap_bytes text{static_cast<unsigned char*>(std::calloc(capacity + 1, 1))};
    if (!text)
        return text;
    uLongf length = capacity;
    const int result = uncompress(text.get(), &length, data, data_length);
    if (result == Z_OK)
        return text;
    status_report(colour::error, "Unable to decompress binary paket. Err: %d", result);
    beep();
    return nullptr;
}
