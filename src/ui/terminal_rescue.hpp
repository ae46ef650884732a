// terminal_rescue.hpp - gives the terminal back if the program crashes or a library ends it.
//
// The bytes that leave the screen are prepared while all is well, so that a crash handler has only
// to write them.
#pragma once

/// Gives the terminal back from now on should the program crash, or should a library end it, as
/// curses does when out of memory. Call once, before curses is started.
void terminal_rescue_arm();

/// Prepares the bytes for the terminal's type. Call as soon as curses has the terminal.
void terminal_rescue_prepare();

/// Leaves the terminal alone from now on.
void terminal_rescue_disarm();

/// Leaves the screen without any help from curses, if the terminal takes output. May be called at
/// any moment.
void terminal_rescue_write();
