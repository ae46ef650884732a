// utf8_text.hpp - texts in the encoding of web pages and JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tovrik
{

/// What utf8_read() returns where there is no character.
constexpr char32_t utf8_broken = 0xFFFFFFFF;

/// Reads the character at `position`, which is within `utf8`, and moves the position after it. If
/// the bytes there are no character of UTF-8, returns utf8_broken and leaves the position.
char32_t utf8_read(std::string_view utf8, std::size_t& position);

/// How many bytes from the beginning are valid UTF-8: all, or those before the first that are not.
std::size_t utf8_valid_length(std::string_view bytes);

/// A text of ISO-8859-1 in UTF-8. Control characters stay.
std::string utf8_of_latin1(std::string_view latin1);

} // namespace tovrik
