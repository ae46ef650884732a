// terminal_output.cpp - see terminal_output.hpp.
#include "support/terminal_output.hpp"

#include "support/shown_bytes.hpp"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>

namespace
{

constexpr char escape = '\033';
constexpr std::size_t max_parameter_digits = 4;
constexpr std::size_t shown_most = 24;

/// Cursor movement and beeps; and the end of another character set, which comes with attributes.
constexpr std::string_view controls = "\a\b\t\n\r\017";
/// The beginning of the other character set, which has the frames where there is no UTF-8.
constexpr char other_set = '\016';

/// What follows the escape character, apart from control sequences.
constexpr std::string_view short_sequences[] = {"(B", "(0", ")0", ")B", "=",     "M",
                                                "E",  "7",  "8",  ">",  "]104\a"};

/// The last bytes of control sequences with plain numbers.
constexpr std::string_view final_bytes = "@ABCDGHJKLMPSTXbdmr";

/// Control sequences with other parameters: modes, and a saved title.
constexpr std::string_view whole_sequences[] = {
    "?1h", "?1l", "?12l", "?25h", "?25l", "?1034h", "?1034l",  "?1049h", "?1049l",
    "?7h", "?7l", "34h",  "34l",  "4h",   "4l",     "22;0;0t", "23;0;0t"};

struct reading {
    std::string_view rest;
    bool utf8;
    bool is_unfinished = false;
};

bool is_number_list(std::string_view text)
{
    std::size_t digits = 0;
    for (const char byte : text) {
        digits = byte == ';' ? 0 : digits + 1;
        if ((byte != ';' && std::isdigit(static_cast<unsigned char>(byte)) == 0) ||
            digits > max_parameter_digits)
            return false;
    }
    return true;
}

/// How many bytes a control sequence has, after its first two; 0 if it is none of curses'.
std::size_t count_sequence_bytes(reading& all, std::string_view text)
{
    std::size_t end = 0;
    while (end < text.size() && text[end] >= ' ' && text[end] <= '?')
        ++end;
    if (end == text.size()) {
        all.is_unfinished = true;
        return 0;
    }
    const std::string_view whole = text.substr(0, end + 1);
    const bool is_known = std::ranges::find(whole_sequences, whole) != std::end(whole_sequences);
    const bool is_plain = final_bytes.find(text[end]) != std::string_view::npos &&
                          is_number_list(text.substr(0, end));
    return is_known || is_plain ? whole.size() : 0;
}

std::size_t count_escape_bytes(reading& all)
{
    const std::string_view text = all.rest.substr(1);
    if (text.empty()) {
        all.is_unfinished = true;
        return 0;
    }
    if (text.front() == '[') {
        const std::size_t length = count_sequence_bytes(all, text.substr(1));
        return length == 0 ? 0 : length + 2;
    }
    for (const std::string_view known : short_sequences) {
        if (text.starts_with(known))
            return known.size() + 1;
        all.is_unfinished = all.is_unfinished || known.starts_with(text);
    }
    return 0;
}

/// How many bytes the character has that begins here; 0 if it is none that is shown.
std::size_t count_character_bytes(reading& all)
{
    const auto first = static_cast<unsigned char>(all.rest.front());
    if (!all.utf8)
        return first >= 0xA0 ? 1 : 0;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    if (all.rest.size() < length) {
        all.is_unfinished = true;
        return 0;
    }
    for (std::size_t at = 1; at < length; ++at)
        if ((static_cast<unsigned char>(all.rest[at]) & 0xC0) != 0x80)
            return 0;
    const bool is_control = first == 0xC2 && static_cast<unsigned char>(all.rest[1]) < 0xA0;
    return is_control ? 0 : length;
}

std::size_t count_known_bytes(reading& all)
{
    const char first = all.rest.front();
    if (first == escape)
        return count_escape_bytes(all);
    if (static_cast<unsigned char>(first) >= 0x80)
        return count_character_bytes(all);
    const bool is_shown = first >= ' ' && first < '\x7F';
    const bool is_allowed =
        controls.find(first) != std::string_view::npos || (!all.utf8 && first == other_set);
    return is_shown || is_allowed ? 1 : 0;
}

} // namespace

void output_inspection::feed(std::string_view output)
{
    if (!found.empty())
        return;
    unread += output;
    reading all{.rest = unread, .utf8 = is_utf8};
    while (!all.rest.empty()) {
        const std::size_t length = count_known_bytes(all);
        if (length == 0)
            break;
        all.rest.remove_prefix(length);
    }
    if (!all.rest.empty() && !all.is_unfinished)
        found = shown_bytes(all.rest, shown_most);
    unread = std::string{all.rest};
}
