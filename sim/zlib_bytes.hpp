// zlib_bytes.hpp - compressing, as transmissions and reports are sent.
#pragma once

#include <string>
#include <string_view>

namespace sim
{

/// `bytes` in the zlib format; nothing when zlib has no memory for it.
std::string zlib_bytes(std::string_view bytes);

} // namespace sim
