// uuid_text.hpp - the identity of a server as a text.
#pragma once

#include <cstdint>
#include <string>

namespace tovrik
{

/// A UUID of version 4 made of 128 bits, six of which its form replaces.
std::string uuid_text(std::uint64_t high, std::uint64_t low);

} // namespace tovrik
