// carried_text.cpp - see carried_text.hpp.
#include "server/messages/carried_text.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/base/utf8_text.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace tovrik
{
namespace
{

constexpr char control_stand_in = ' ';
constexpr char unknown_stand_in = '?';

struct stand_in {
    char32_t character;
    const char* text;
};

constexpr stand_in typographic_marks[] = {
    {0x2010, "-"},   {0x2011, "-"},  {0x2012, "-"},   {0x2013, "-"},  {0x2014, "-"},
    {0x2018, "'"},   {0x2019, "'"},  {0x201A, ","},   {0x201C, "\""}, {0x201D, "\""},
    {0x201E, "\""},  {0x2022, "*"},  {0x2026, "..."}, {0x2032, "'"},  {0x2033, "\""},
    {0x20AC, "EUR"}, {0x2190, "<-"}, {0x2192, "->"},  {0x2212, "-"},
};

void append_latin1(std::string& text, char32_t character)
{
    if (character == '\n') {
        text += '\n';
    } else if (is_control(character)) {
        text += control_stand_in;
    } else if (character <= 0xFF) {
        text += static_cast<char>(character);
    } else {
        const auto* const found =
            std::ranges::find(typographic_marks, character, &stand_in::character);
        if (found != std::end(typographic_marks)) {
            text += found->text;
        } else {
            text += unknown_stand_in;
        }
    }
}

} // namespace

std::string as_utf8(std::string_view bytes)
{
    return utf8_valid_length(bytes) == bytes.size() ? std::string{bytes} : utf8_of_latin1(bytes);
}

std::string latin1_text(std::string_view utf8)
{
    std::string text;
    for (std::size_t at = 0; at < utf8.size();) {
        if (utf8[at] == '\r') {
            // A carriage return and a line feed together end one line, not two.
            ++at;
            if (at == utf8.size() || utf8[at] != '\n')
                text += '\n';
            continue;
        }
        const char32_t character = utf8_read(utf8, at);
        if (character == utf8_broken) {
            text += unknown_stand_in;
            ++at;
        } else {
            append_latin1(text, character);
        }
    }
    return text;
}

std::vector<std::string> content_parts(std::string_view content, std::size_t max_later_bytes)
{
    content = content.substr(0, content.find_last_not_of('\n') + 1);
    std::vector<std::string> parts;
    std::size_t room = max_value_bytes;
    while (content.size() > room) {
        const auto line_end = content.rfind('\n', room);
        const bool at_line = line_end != std::string_view::npos && line_end > 0;
        const std::size_t length = at_line ? line_end : room;
        parts.emplace_back(content.substr(0, length));
        content.remove_prefix(at_line ? length + 1 : length);
        room = max_later_bytes;
    }
    parts.emplace_back(content);
    return parts;
}

std::vector<std::string> numbered_parts(std::string_view content)
{
    auto parts = content_parts(content, max_value_bytes - max_part_mark_bytes);
    for (std::size_t i = 1; i < parts.size(); ++i) {
        parts[i].insert(0, "(part " + std::to_string(i + 1) + " of " +
                               std::to_string(parts.size()) + ")\n");
    }
    return parts;
}

} // namespace tovrik
