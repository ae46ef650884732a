// utf8_text.cpp - see utf8_text.hpp.
#include "server/base/utf8_text.hpp"

namespace tovrik
{
namespace
{

unsigned char read_byte(std::string_view text, std::size_t position)
{
    return static_cast<unsigned char>(text[position]);
}

/// The number of bytes of a character whose first byte is `first`; 0 if no character begins so.
std::size_t count_sequence_bytes(unsigned char first)
{
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first < 0xE0)
        return 2;
    if (first >= 0xE0 && first < 0xF0)
        return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

} // namespace

char32_t utf8_read(std::string_view utf8, std::size_t& position)
{
    constexpr char32_t min_characters[] = {0, 0, 0x80, 0x800, 0x10000};
    const unsigned char first = read_byte(utf8, position);
    const std::size_t length = count_sequence_bytes(first);
    if (length == 0 || position + length > utf8.size())
        return utf8_broken;
    char32_t character = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned char byte = read_byte(utf8, position + i);
        if ((byte & 0xC0U) != 0x80)
            return utf8_broken;
        character = character << 6 | (byte & 0x3FU);
    }
    if (character < min_characters[length] || character > 0x10FFFF ||
        (character >= 0xD800 && character < 0xE000))
        return utf8_broken;
    position += length;
    return character;
}

std::size_t utf8_valid_length(std::string_view bytes)
{
    std::size_t at = 0;
    while (at < bytes.size() && utf8_read(bytes, at) != utf8_broken) {
    }
    return at;
}

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
