// signals.hpp - what happens to the terminal when the program is told to end, to stop, or crashes.
#pragma once

/// Installs the handlers for the signals that end, stop and continue the program. Call once, before
/// curses is started: where it finds SIGTSTP free, it ignores the signal whenever it draws, and a
/// stop that was asked for meanwhile would be lost.
void signals_init();

/// Installs the handlers for crashes. Call once, after curses was started, which tells them what
/// gives the terminal back.
void crash_signals_init();
