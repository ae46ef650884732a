// terminal_type.cpp - see terminal_type.hpp.
#include "ui/terminal_type.hpp"

#include <ncurses.h>
#include <term.h>

const char* terminal_capability(const char* name)
{
    // Some builds of curses declare the name as writable; none writes to it.
    const char* text = tigetstr(const_cast<char*>(name));
    return text != reinterpret_cast<const char*>(-1) ? text : nullptr;
}

void terminal_capability_expand(const char* capability, int (*put)(int byte))
{
    tputs(capability, 1, put);
}
