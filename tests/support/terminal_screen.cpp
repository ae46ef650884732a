// terminal_screen.cpp - a terminal without a window, built on libvterm.
#include "support/terminal_screen.hpp"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <utility>
#include <vterm.h>

struct terminal_screen::emulator {
    VTerm* terminal = nullptr;
    VTermScreen* screen = nullptr;
    bool utf8 = true;
    std::string answers;
    std::string beginning;  // of a character, whose end is still to come
    std::string unfinished; // the end of the output, which may hold half a cursor sequence
    bool cursor_visible = true;
    bool alternate = false;
    int bells = 0;
};

namespace
{

/// The emulator puts four bytes on the stack for each byte that it gets at once.
constexpr std::size_t max_piece_bytes = 16384;

constexpr std::string_view show_cursor = "\033[?25h";
constexpr std::string_view hide_cursor = "\033[?25l";

/// Ends a sequence in the middle.
constexpr char cancel = '\x18';

/// The length of a text without a character at its end that is not whole.
std::size_t count_whole_bytes(std::string_view text)
{
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
        const auto byte = static_cast<unsigned char>(text[text.size() - back]);
        if (byte < 0x80)
            break;
        if (byte < 0xC0)
            continue;
        const std::size_t length = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        return length > back ? text.size() - back : text.size();
    }
    return text.size();
}

void append_utf8(std::string& text, std::uint32_t code)
{
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

int find_palette_index(const VTermColor& colour)
{
    if (VTERM_COLOR_IS_DEFAULT_FG(&colour) || VTERM_COLOR_IS_DEFAULT_BG(&colour) ||
        !VTERM_COLOR_IS_INDEXED(&colour))
        return default_colour;
    return colour.indexed.idx;
}

VTermKey find_emulator_key(named_key key)
{
    switch (key) {
    case named_key::enter:
        return VTERM_KEY_ENTER;
    case named_key::tab:
        return VTERM_KEY_TAB;
    case named_key::backspace:
        return VTERM_KEY_BACKSPACE;
    case named_key::escape:
        return VTERM_KEY_ESCAPE;
    case named_key::up:
        return VTERM_KEY_UP;
    case named_key::down:
        return VTERM_KEY_DOWN;
    case named_key::left:
        return VTERM_KEY_LEFT;
    case named_key::right:
        return VTERM_KEY_RIGHT;
    case named_key::home:
        return VTERM_KEY_HOME;
    case named_key::end:
        return VTERM_KEY_END;
    case named_key::function_1:
        return static_cast<VTermKey>(VTERM_KEY_FUNCTION(1));
    }
    return VTERM_KEY_NONE;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const screen_cell& cell)
{
    return out << '"' << cell.text << "\" " << cell.foreground << " on " << cell.background
               << (cell.bold ? " bold" : "") << (cell.reverse ? " reverse" : "")
               << (cell.underline ? " underlined" : "");
}

terminal_screen::terminal_screen(int rows, int columns, bool utf8)
    : inner(std::make_unique<emulator>())
{
    // Which others there are differs between versions of the library.
    static constexpr VTermScreenCallbacks callbacks = [] {
        VTermScreenCallbacks made = {};
        made.settermprop = [](VTermProp property, VTermValue* value, void* user) {
            auto& self = *static_cast<emulator*>(user);
            if (property == VTERM_PROP_ALTSCREEN)
                self.alternate = value->boolean != 0;
            return 1;
        };
        made.bell = [](void* user) {
            ++static_cast<emulator*>(user)->bells;
            return 1;
        };
        return made;
    }();
    inner->terminal = vterm_new(rows, columns);
    inner->utf8 = utf8;
    vterm_set_utf8(inner->terminal, utf8 ? 1 : 0);
    vterm_output_set_callback(
        inner->terminal,
        [](const char* bytes, std::size_t length, void* user) {
            static_cast<emulator*>(user)->answers.append(bytes, length);
        },
        inner.get());
    inner->screen = vterm_obtain_screen(inner->terminal);
    vterm_screen_set_callbacks(inner->screen, &callbacks, inner.get());
    vterm_screen_enable_altscreen(inner->screen, 1);
    vterm_screen_reset(inner->screen, 1);
}

terminal_screen::~terminal_screen()
{
    vterm_free(inner->terminal);
}

void terminal_screen::feed(std::string_view output)
{
    const std::string all = inner->beginning.append(output);
    const std::size_t whole = inner->utf8 ? count_whole_bytes(all) : all.size();
    inner->beginning = all.substr(whole);
    for (std::string_view rest{all.data(), whole}; !rest.empty();) {
        const std::string_view piece = rest.substr(0, max_piece_bytes);
        vterm_input_write(inner->terminal, piece.data(), piece.size());
        rest.remove_prefix(piece.size());
    }
    // The emulator is not asked: it restores visibility with a saved cursor, terminals do not.
    const std::string recent = inner->unfinished.append(output);
    const std::size_t shown = recent.rfind(show_cursor);
    const std::size_t hidden = recent.rfind(hide_cursor);
    if (shown != std::string::npos || hidden != std::string::npos)
        inner->cursor_visible =
            hidden == std::string::npos || (shown != std::string::npos && shown > hidden);
    inner->unfinished = recent.substr(recent.size() - std::min(recent.size(), show_cursor.size()));
}

void terminal_screen::forget_beginning()
{
    inner->beginning.clear();
    vterm_input_write(inner->terminal, &cancel, 1);
}

void terminal_screen::resize(int rows, int columns)
{
    // Terminals drop scrolling margins when the size changes. The emulator keeps their top and the
    // saved cursor even below the last row, and then writes outside its own memory.
    const std::string margins_off = "\033[r\033[" + std::to_string(cursor_row() + 1) + ";" +
                                    std::to_string(cursor_column() + 1) + "H";
    constexpr std::string_view save_cursor = "\0337";
    vterm_input_write(inner->terminal, margins_off.data(), margins_off.size());
    vterm_set_size(inner->terminal, rows, columns);
    vterm_input_write(inner->terminal, save_cursor.data(), save_cursor.size());
}

int terminal_screen::rows() const
{
    int rows = 0;
    int columns = 0;
    vterm_get_size(inner->terminal, &rows, &columns);
    return rows;
}

int terminal_screen::columns() const
{
    int rows = 0;
    int columns = 0;
    vterm_get_size(inner->terminal, &rows, &columns);
    return columns;
}

screen_cell terminal_screen::cell(int row, int column) const
{
    screen_cell seen{.text = " "};
    if (row < 0 || column < 0 || row >= rows() || column >= columns())
        return seen;
    VTermScreenCell raw{};
    vterm_screen_get_cell(inner->screen, {row, column}, &raw);
    if (raw.chars[0] == static_cast<std::uint32_t>(-1))
        seen.text.clear(); // the right half of a wide character
    else if (raw.chars[0] != 0) {
        seen.text.clear();
        for (int at = 0; at < VTERM_MAX_CHARS_PER_CELL && raw.chars[at] != 0; ++at)
            append_utf8(seen.text, raw.chars[at]);
    }
    seen.foreground = find_palette_index(raw.fg);
    seen.background = find_palette_index(raw.bg);
    seen.bold = raw.attrs.bold != 0;
    seen.reverse = raw.attrs.reverse != 0;
    seen.underline = raw.attrs.underline != 0;
    return seen;
}

std::string terminal_screen::text(int row, int column, int width) const
{
    const int end = width < 0 ? columns() : column + width;
    std::string found;
    for (int at = column; at < end; ++at)
        found += cell(row, at).text;
    return found;
}

std::string terminal_screen::whole_text() const
{
    std::string all;
    for (int at = 0; at < rows(); ++at) {
        std::string line = text(at);
        line.erase(line.find_last_not_of(' ') + 1);
        all += line + '\n';
    }
    return all;
}

int terminal_screen::cursor_row() const
{
    VTermPos place{};
    vterm_state_get_cursorpos(vterm_obtain_state(inner->terminal), &place);
    return place.row;
}

int terminal_screen::cursor_column() const
{
    VTermPos place{};
    vterm_state_get_cursorpos(vterm_obtain_state(inner->terminal), &place);
    return place.col;
}

bool terminal_screen::cursor_visible() const
{
    return inner->cursor_visible;
}

bool terminal_screen::alternate_screen() const
{
    return inner->alternate;
}

int terminal_screen::bells() const
{
    return inner->bells;
}

std::string terminal_screen::key_bytes(named_key key)
{
    const std::string pending = std::exchange(inner->answers, {});
    vterm_keyboard_key(inner->terminal, find_emulator_key(key), VTERM_MOD_NONE);
    return std::exchange(inner->answers, pending);
}

std::string terminal_screen::take_answers()
{
    return std::exchange(inner->answers, {});
}
