// keys.cpp - see keys.hpp.
#include "ui/keys.hpp"

#include "app/app_state.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_type.hpp"

#include <csignal>
#include <cstring>
#include <langinfo.h>

namespace
{

constexpr int escape_delay_ms = 25;
constexpr int meta_bit = 0x80;
constexpr int control_h = 8;
constexpr int looks_before_the_end = 3;

bool is_utf8_locale()
{
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

void define_escaped_letters()
{
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const char sequence[] = {'\033', letter, '\0'};
        define_key(sequence, letter | meta_bit);
    }
}

void define_utf8_letters()
{
    for (int code = 0xA0; code <= 0xFF; ++code) {
        const char sequence[] = {static_cast<char>(0xC0 | (code >> 6)),
                                 static_cast<char>(0x80 | (code & 0x3F)), '\0'};
        define_key(sequence, code);
    }
}

bool backspace_sends_control_h()
{
    const char* sequence = terminal_capability(terminal_text::backspace);
    return sequence != nullptr && std::strcmp(sequence, "\010") == 0;
}

/// The next key that was typed; curses makes one up after a resize.
int typed_key(WINDOW* window)
{
    int key = ERR;
    do
        key = wgetch(window);
    while (key == KEY_RESIZE);
    return key;
}

/// The next key of a line that curses has found nothing on. An input that has ended is always ready
/// and never has a key; one look is not enough, since a key may come in at any moment.
int key_look_closer(WINDOW* window)
{
    for (int look = 0; look < looks_before_the_end; ++look) {
        const line_state state = terminal_line_state();
        if (state == line_state::quiet)
            return ERR;
        const int key = state != line_state::gone ? typed_key(window) : ERR;
        // Bytes that could not be read now are read in a later round.
        if (key != ERR || state == line_state::typed)
            return key;
    }
    raise(SIGHUP);
    return ERR;
}

} // namespace

void keys_init()
{
    set_escdelay(escape_delay_ms);
    meta(stdscr, TRUE);
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
    if (app_state.is_screen_lost)
        return ERR;
    WINDOW* reader = window != nullptr ? window : stdscr;
    int key = typed_key(reader);
    const bool has_terminal = app_state.terminal != nullptr;
    if (key == ERR && has_terminal)
        key = key_look_closer(reader);
    return key == KEY_ENTER ? key_enter : key;
}

int key_read_for_prompt(WINDOW* window)
{
    const int key = key_read(window);
    return key == control_h && backspace_sends_control_h() ? KEY_BACKSPACE : key;
}
