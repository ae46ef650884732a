// signals.hpp - what happens to the terminal when the program is told to end, to stop, or crashes.
#pragma once

/// Installs the handlers for the signals that end, stop and continue the program. Call once, before
/// curses is started: where it finds SIGTSTP free, it ignores the signal whenever it draws, and a
/// stop that was asked for meanwhile would be lost.
void signals_init();

/// Whether the terminal is to be given back should the program crash, or a library end it, as
/// curses does when its memory runs out. Off at first. To be turned on before curses is started,
/// and once more when it knows the terminal's type, which tells how that is done.
void terminal_guard(bool is_on);
