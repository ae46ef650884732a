// glyphs.cpp - see glyphs.hpp.
#include "ui/glyphs.hpp"

#include <algorithm>
#include <cstddef>
#include <cwchar>

namespace
{

/// Cells written by one call of curses.
constexpr std::size_t max_run = 128;

/// Blanks stand for the control characters that only place text, "?" for all others.
wchar_t glyph_of(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '\t' || byte == '\r' || byte == '\n')
        return L' ';
    if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0))
        return L'?';
    // Outside UTF-8, curses has been told that codes from 0xA0 are printable, and sends the byte.
    return static_cast<wchar_t>(byte);
}

/// Writes text at a place and leaves out what would reach `end`, a column.
int write_up_to(WINDOW* window, int row, int column, int end, std::string_view text)
{
    const int width = std::max(0, end - column);
    text = text.substr(0, static_cast<std::size_t>(width));
    glyphs_write_at(window, row, column, text);
    return column + static_cast<int>(text.size());
}

} // namespace

/// Takes the place of the C library's function, which curses asks how many cells a character takes
/// (-1: it cannot be shown). Letters from 0xA0 take one in every locale. The C library says -1 of
/// those that the locale's set lacks, and ncurses 6.5 then shows blanks, whatever
/// use_legacy_coding was told.
int wcwidth(wchar_t code) noexcept
{
    const wchar_t text[] = {code, L'\0'};
    return code >= 0xA0 && code <= 0xFF ? 1 : wcswidth(text, 1);
}

void glyphs_write(WINDOW* window, std::string_view text)
{
    if (window == nullptr)
        return;
    wchar_t run[max_run];
    while (!text.empty()) {
        const std::size_t length = std::min(text.size(), max_run);
        std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), run,
                       glyph_of);
        if (waddnwstr(window, run, static_cast<int>(length)) == ERR)
            return;
        text.remove_prefix(length);
    }
}

void glyphs_write_at(WINDOW* window, int row, int column, std::string_view text)
{
    if (window != nullptr && wmove(window, row, column) != ERR)
        glyphs_write(window, text);
}

int glyphs_write_to_edge(WINDOW* window, int row, int column, std::string_view text)
{
    return write_up_to(window, row, column, getmaxx(window), text);
}

int glyphs_write_to_frame(WINDOW* window, int row, int column, std::string_view text)
{
    return write_up_to(window, row, column, getmaxx(window) - 1, text);
}

void glyphs_end_line(WINDOW* window)
{
    if (window != nullptr)
        waddch(window, '\n');
}

void glyphs_attribute(WINDOW* window, colour pair, bool bold)
{
    const attr_t weight = bold ? A_BOLD : A_NORMAL;
    const auto colours = static_cast<attr_t>(COLOR_PAIR(colour_number(pair)));
    const attr_t look = colours | colour_substitute(pair) | weight;
    if (window != nullptr)
        wattrset(window, static_cast<int>(look));
}
