// shown_bytes.hpp - bytes of any value, for the messages of failed tests.
#pragma once

#include <cctype>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

/// At most `most` bytes; those that cannot be printed as hexadecimal numbers.
inline std::string shown_bytes(std::string_view bytes, std::size_t most)
{
    std::string shown;
    for (const char byte : bytes.substr(0, most)) {
        char code[8];
        const bool is_printed = std::isprint(static_cast<unsigned char>(byte)) != 0;
        std::snprintf(code, sizeof code, is_printed ? "%c" : "\\x%02X",
                      static_cast<unsigned char>(byte));
        shown += code;
    }
    return shown + (bytes.size() > most ? "..." : "");
}
