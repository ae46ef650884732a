// text.cpp - duplicating, appending, replacing, splitting and trimming texts.
#include "data/text.hpp"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace
{

/// Overwrites every pattern with the replacement, which is as long as the pattern.
void replace_in_place(char* text, const char* pattern, const char* replacement, std::size_t length)
{
    for (char* match = std::strstr(text, pattern); match != nullptr;
         match = std::strstr(match + length, pattern))
        std::memcpy(match, replacement, length);
}

/// The length of a text with the replacement in place of every pattern.
std::size_t count_replaced(const char* text, const char* pattern, const char* replacement)
{
    const std::size_t pattern_length = std::strlen(pattern);
    const std::size_t replacement_length = std::strlen(replacement);
    std::size_t length = std::strlen(text);
    for (const char* match = std::strstr(text, pattern); match != nullptr;
         match = std::strstr(match + pattern_length, pattern))
        length = length - pattern_length + replacement_length;
    return length;
}

char* append_bytes(char* end, const char* bytes, std::size_t length)
{
    std::memcpy(end, bytes, length);
    return end + length;
}

} // namespace

char* str_dup(const char* text)
{
    if (text == nullptr)
        return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    if (copy != nullptr)
        std::memcpy(copy, text, size);
    return copy;
}

char* str_append(char* text, const char* added)
{
    if (added == nullptr || *added == '\0')
        return text;
    const std::size_t length = text == nullptr ? 0 : std::strlen(text);
    const std::size_t added_size = std::strlen(added) + 1;
    auto* grown = static_cast<char*>(std::realloc(text, length + added_size));
    if (grown == nullptr)
        return text;
    std::memcpy(grown + length, added, added_size);
    return grown;
}

char* str_replace(char* text, const char* pattern, const char* replacement)
{
    if (text == nullptr || *pattern == '\0')
        return text;
    if (replacement == nullptr)
        replacement = "";
    const char* match = std::strstr(text, pattern);
    if (match == nullptr)
        return text;
    const std::size_t pattern_length = std::strlen(pattern);
    const std::size_t replacement_length = std::strlen(replacement);
    if (pattern_length == replacement_length) {
        replace_in_place(text, pattern, replacement, pattern_length);
        return text;
    }

    // Built beside the old text, so that a failed allocation leaves that one whole.
    const std::size_t length = count_replaced(text, pattern, replacement);
    auto* made = static_cast<char*>(std::malloc(length + 1));
    if (made == nullptr)
        return text;
    char* end = made;
    const char* rest = text;
    for (; match != nullptr; match = std::strstr(rest, pattern)) {
        end = append_bytes(end, rest, static_cast<std::size_t>(match - rest));
        end = append_bytes(end, replacement, replacement_length);
        rest = match + pattern_length;
    }
    append_bytes(end, rest, std::strlen(rest) + 1);
    std::free(text);
    return made;
}

int str_split(char* text, char** fields, int field_slots, const char* separators)
{
    const bool blank_mode = separators[0] == '\0';
    const bool runs_count_once = blank_mode || separators[1] != '\0';
    const char* set = blank_mode ? " \t" : separators;

    char* field = blank_mode ? text + std::strspn(text, set) : text;
    if (*field == '\0')
        return 0;
    for (int count = 0;;) {
        if (count < field_slots)
            fields[count] = field;
        ++count;
        char* separator = field + std::strcspn(field, set);
        if (*separator == '\0')
            return count;
        field = separator + (runs_count_once ? std::strspn(separator, set) : 1);
        const bool was_last = blank_mode && *field == '\0';
        // The last slot keeps its separators when further fields follow.
        if (count < field_slots || (was_last && count == field_slots))
            *separator = '\0';
        if (was_last)
            return count;
    }
}

char* strip_trailing_slash(char* text)
{
    const std::size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '/')
        text[length - 1] = '\0';
    return text;
}
