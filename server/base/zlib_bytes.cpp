// zlib_bytes.cpp - see zlib_bytes.hpp.
#include "server/base/zlib_bytes.hpp"

#include <zlib.h>

namespace tovrik
{

std::string zlib_bytes(std::string_view bytes)
{
    uLongf length = compressBound(static_cast<uLong>(bytes.size()));
    std::string compressed(length, '\0');
    const int result =
        compress(reinterpret_cast<Bytef*>(compressed.data()), &length,
                 reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()));
    compressed.resize(result == Z_OK ? length : 0);
    return compressed;
}

} // namespace tovrik
