// terminal_type.cpp - see terminal_type.hpp.
#include "ui/terminal_type.hpp"

#include <cstdint>
#include <ncurses.h>
#include <term.h>

namespace
{

// Not by name: for that, curses makes a table of all names, 8 kB that would stay.
const char* text_of(terminal_text which)
{
    switch (which) {
    case terminal_text::attributes_off:
        return exit_attribute_mode;
    case terminal_text::first_colours:
        return orig_pair;
    case terminal_text::keypad_off:
        return keypad_local;
    case terminal_text::full_screen_off:
        return exit_ca_mode;
    case terminal_text::cursor_on:
        return cursor_normal;
    case terminal_text::backspace:
        return key_backspace;
    }
    return nullptr;
}

} // namespace

const char* terminal_capability(terminal_text which)
{
    const char* text = cur_term != nullptr ? text_of(which) : nullptr;
    // The address -1 stands for a text that the type has taken back.
    return reinterpret_cast<std::intptr_t>(text) != -1 ? text : nullptr;
}

void terminal_capability_expand(const char* capability, int (*put)(int byte))
{
    tputs(capability, 1, put);
}
