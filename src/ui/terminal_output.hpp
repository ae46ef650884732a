// terminal_output.hpp - hands curses' output to the terminal without ever waiting for it.
//
// Curses writes until the terminal has taken every byte, and would wait for ever for one that takes
// none. So it writes into a store, a file in memory, and from there the terminal is given what it
// takes, in order. There is no store where the standard output is not a terminal, the system has
// none to give, or the user's limit for the size of files would cut it; curses writes to the
// terminal itself then, as it always did.
#pragma once

#include <cstddef>
#include <cstdio>

/// The stream for curses to start on: one of its own for the terminal, or stdout. Null never.
std::FILE* terminal_output_open();

/// Lets go of what terminal_output_open gave. For when curses could not start on it.
void terminal_output_close(std::FILE* stream);

/// Chooses for what curses writes from now on between the store and the terminal itself. Call as
/// soon as curses has set the terminal's modes, which it cannot do once it has the store, and
/// before every update.
void terminal_output_choose();

/// Gives the terminal as much as it takes now. True if nothing is left. What is left and came late
/// is dropped when it grows beyond a bound.
bool terminal_output_carry();

/// The same, and gives it a moment to take an update that is larger than the line's buffers. Call
/// after the update of a terminal that was not behind.
void terminal_output_hurry();

/// Gives the terminal everything, as long as it goes on taking it, and five seconds at most. False
/// if it stood still for half a second or was too slow; the rest is dropped.
bool terminal_output_finish();

/// Whether output was dropped since the last call: the screen is to be drawn whole.
bool terminal_output_take_loss();

/// Writes bytes to the terminal past curses and the store, within half a second or not at all. May
/// be called while the program crashes.
void terminal_output_write(const char* bytes, std::size_t length);
