// signals.hpp - what happens to the terminal when the program is told to end, to stop, or crashes.
#pragma once

/// Installs the handlers for the signals that end, stop and continue the program, in place of those
/// that curses brings. Call once, after curses was started.
void signals_init();

/// Whether the terminal is to be given back should the program crash, or a library end it, as
/// curses does when its memory runs out. Off at first.
void terminal_guard(bool is_on);
