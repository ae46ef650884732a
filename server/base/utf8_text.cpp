// utf8_text.cpp - see utf8_text.hpp.
#include "server/base/utf8_text.hpp"

namespace tovrik
{

std::string utf8_of_latin1(std::string_view latin1)
{
    std::string utf8;
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
        } else {
            utf8 += static_cast<char>(0xC0U | byte >> 6);
            utf8 += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return utf8;
}

} // namespace tovrik
