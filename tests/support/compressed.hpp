// compressed.hpp - compressed bytes as servers send them.
#pragma once

#include <string>
#include <string_view>
#include <vector>
#include <zlib.h>

/// A text as zlib data.
inline std::string compressed(std::string_view text)
{
    uLongf length = compressBound(static_cast<uLong>(text.size()));
    std::string bytes(length, '\0');
    // The buffer is always large enough.
    compress(reinterpret_cast<Bytef*>(bytes.data()), &length,
             reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()));
    bytes.resize(length);
    return bytes;
}

/// The same without a terminator that could be read by mistake.
inline std::vector<unsigned char> compressed_bytes(std::string_view text)
{
    const std::string bytes = compressed(text);
    return {bytes.begin(), bytes.end()};
}
