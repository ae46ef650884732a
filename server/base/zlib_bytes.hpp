// zlib_bytes.hpp - compresses transmissions and reports.
#pragma once

#include <string>
#include <string_view>

namespace tovrik
{

/// `bytes` in the zlib format; empty if zlib is out of memory.
std::string zlib_bytes(std::string_view bytes);

} // namespace tovrik
