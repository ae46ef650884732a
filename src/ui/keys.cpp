// keys.cpp - see keys.hpp.
#include "ui/keys.hpp"

#include "app/app_state.hpp"
#include "ui/curses_screen.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_type.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <langinfo.h>

namespace
{

constexpr int escape_delay_ms = 25;
constexpr int meta_bit = 0x80;
constexpr int control_h = control('H');
constexpr int max_looks = 3;

/// Marks a key that is known to be whole, unlike a byte that may begin a character.
constexpr int whole_key = 0x4000;
constexpr int max_byte = 0xFF;

bool is_utf8_locale()
{
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

void define_escaped_letters()
{
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const char sequence[] = {'\033', letter, '\0'};
        define_key(sequence, letter | meta_bit | whole_key);
    }
}

void define_utf8_letters()
{
    for (int code = 0xA0; code <= 0xFF; ++code) {
        const char sequence[] = {static_cast<char>(0xC0 | (code >> 6)),
                                 static_cast<char>(0x80 | (code & 0x3F)), '\0'};
        define_key(sequence, code | whole_key);
    }
}

/// Whether the terminal sends ^H for its Backspace key.
bool is_backspace_control_h()
{
    const char* sequence = terminal_sequence(terminal_text::backspace);
    return sequence != nullptr && std::strcmp(sequence, "\010") == 0;
}

/// The next key that was typed. Curses makes one up after a resize, which is left out.
int read_typed_key(WINDOW* window)
{
    int key = ERR;
    do
        key = wgetch(window);
    while (key == KEY_RESIZE);
    return key;
}

/// Looks again for a key where curses has found none, and raises SIGHUP if there can never be one.
/// An input that has ended is always ready but never has a key. One look is not enough, since a key
/// may come in at any moment.
int look_for_key_or_end(WINDOW* window)
{
    for (int look = 0; look < max_looks; ++look) {
        const line_state state = terminal_line_state();
        if (state == line_state::quiet)
            return ERR;
        const int key = state != line_state::gone ? read_typed_key(window) : ERR;
        // Bytes that could not be read now are read in a later round.
        if (key != ERR || state == line_state::typed)
            return key;
    }
    raise(SIGHUP);
    return ERR;
}

/// How many bytes follow this one if it begins a character of three or four bytes. Curses knows the
/// characters of two bytes.
int count_bytes_after(int byte)
{
    if (byte < 0xE0 || byte > 0xF4)
        return 0;
    return byte < 0xF0 ? 2 : 3;
}

bool is_continuation(int key)
{
    return key >= 0x80 && key <= 0xBF;
}

/// The next key that comes in before the deadline, or ERR.
int wait_for_key(WINDOW* window, std::chrono::steady_clock::time_point deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    wtimeout(window, std::max(0, static_cast<int>(left.count())));
    const int key = read_typed_key(window);
    nodelay(window, TRUE);
    return key;
}

/// The key that starts with this byte in UTF-8. A lone byte is ALT and a letter; one that others
/// continue is the start of a character, even if that breaks off.
int complete_character(WINDOW* window, int byte)
{
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds{escape_delay_ms};
    int key = byte;
    for (int left = count_bytes_after(byte); left > 0; --left) {
        const int next = wait_for_key(window, deadline);
        if (!is_continuation(next)) {
            if (next != ERR)
                ungetch(next);
            return key;
        }
        key = key_unknown;
    }
    return key;
}

} // namespace

void keys_init()
{
    set_escdelay(escape_delay_ms);
    keypad(stdscr, TRUE);
    // Without this, curses puts off drawing while keys are waiting.
    typeahead(-1);
    define_escaped_letters();
    if (is_utf8_locale())
        define_utf8_letters();
    define_key("\010", 0);
    define_key("\177", KEY_BACKSPACE);
}

int key_read(WINDOW* window)
{
    // Reading from a window draws it.
    if (!may_draw())
        return ERR;
    WINDOW* reader = window != nullptr ? window : stdscr;
    int key = read_typed_key(reader);
    const bool has_terminal = app_state.terminal != nullptr;
    if (key == ERR && has_terminal)
        key = look_for_key_or_end(reader);
    if (is_utf8_locale())
        key = complete_character(reader, key);
    if (key != ERR && (key & whole_key) != 0)
        key &= max_byte;
    return key == KEY_ENTER ? key_enter : key;
}

void key_give_back(int key)
{
    ungetch(key >= 0 && key <= max_byte ? key | whole_key : key);
}

int key_read_for_prompt(WINDOW* window)
{
    const int key = key_read(window);
    return key == control_h && is_backspace_control_h() ? KEY_BACKSPACE : key;
}
