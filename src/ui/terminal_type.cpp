// terminal_type.cpp - see terminal_type.hpp.
#include "ui/terminal_type.hpp"

#include <cstdint>
#include <ncurses.h>
#include <term.h>

const char* terminal_capability(const char* name)
{
    // Some builds of curses declare the name as writable; none writes to it.
    const char* text = tigetstr(const_cast<char*>(name));
    // Curses gives the address -1 for names that are no text capabilities.
    return reinterpret_cast<std::intptr_t>(text) != -1 ? text : nullptr;
}

void terminal_capability_expand(const char* capability, int (*put)(int byte))
{
    tputs(capability, 1, put);
}
