// signals.hpp - what happens to the terminal when the program is told to end, to stop, or crashes.
#pragma once

/// Installs the handlers for the signals that end, stop and continue the program, in place of those
/// that curses brings, and for crashes. Call once, after curses was started.
void signals_init();
