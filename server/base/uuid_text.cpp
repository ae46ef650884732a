// uuid_text.cpp - see uuid_text.hpp.
#include "server/base/uuid_text.hpp"

#include <cstdio>

namespace tovrik
{

std::string uuid_text(std::uint64_t high, std::uint64_t low)
{
    char text[37];
    std::snprintf(text, sizeof text, "%08x-%04x-4%03x-8%03x-%012llx",
                  static_cast<unsigned>(high >> 32), static_cast<unsigned>(high >> 16 & 0xFFFF),
                  static_cast<unsigned>(high & 0xFFF), static_cast<unsigned>(low >> 52),
                  static_cast<unsigned long long>(low & 0xFFFFFFFFFFFF));
    return text;
}

} // namespace tovrik
