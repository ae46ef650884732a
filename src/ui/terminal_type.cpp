// terminal_type.cpp - see terminal_type.hpp.
#include "ui/terminal_type.hpp"

#include <cstddef>
#include <ncurses.h>
#include <term.h>

const char* terminal_sequence(terminal_text which)
{
    if (cur_term == nullptr)
        return nullptr;
    // Not looked up by name: curses would make a table of all names for that, 8 kB that stay.
    const char* const texts[] = {exit_attribute_mode, orig_pair,     keypad_local, meta_off,
                                 exit_ca_mode,        cursor_normal, key_backspace};
    const char* text = texts[static_cast<std::size_t>(which)];
    // The address -1 stands for a text that the type has cancelled.
    return reinterpret_cast<std::intptr_t>(text) != -1 ? text : nullptr;
}

void terminal_sequence_expand(const char* sequence, int (*put)(int byte))
{
    tputs(sequence, 1, put);
}
