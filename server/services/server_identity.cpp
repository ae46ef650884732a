// server_identity.cpp - see server_identity.hpp.
#include "server/services/server_identity.hpp"

#include "server/base/random_source.hpp"

#include <cstdio>

namespace tovrik
{

std::string server_uuid(const std::string& seed, std::uint16_t port)
{
    random_source random{make_seed(seed, port)};
    const std::uint64_t high = random.next();
    const std::uint64_t low = random.next();
    char text[37];
    std::snprintf(text, sizeof text, "%08x-%04x-4%03x-8%03x-%012llx",
                  static_cast<unsigned>(high >> 32), static_cast<unsigned>(high >> 16 & 0xFFFF),
                  static_cast<unsigned>(high & 0xFFF), static_cast<unsigned>(low >> 52),
                  static_cast<unsigned long long>(low & 0xFFFFFFFFFFFF));
    return text;
}

} // namespace tovrik
