// terminal_line.hpp - the terminal's line: whether it is still there, whose turn it is, its modes.
#pragma once

#include <cstdint>

enum class line_state : std::uint8_t {
    quiet, // nobody has typed
    typed, // bytes wait to be read
    ready, // to be read, but without bytes, as at the end of the input; or it cannot be told
    gone,  // the terminal, or what stands for it as input or output, has vanished
};

/// Looks at the program's standard input and output; never waits.
line_state terminal_line_state();

/// Whether the terminal has been given to another job of its session. Its modes are not to be
/// touched then. False where no shell controls jobs. May be called while the program crashes.
bool terminal_is_lent();

/// Stops, under a shell that controls jobs, until it is this program's turn to use the terminal.
/// Call before signals are held back.
void terminal_wait_for_turn();

/// Notes the terminal's present modes, which are the ones given back. Call just before it gets the
/// client's.
void terminal_modes_note();

/// Completes the modes that curses has just set, and takes the result for the client's modes: ^S
/// does not stop the output, and ^Q is a key as well.
void terminal_modes_complete();

/// Gives the terminal the client's modes. Never waits for its output.
void terminal_modes_take();

/// Gives the terminal the modes that were noted, unless it has them. Never waits for its output.
/// May be called while the program crashes.
void terminal_modes_give_back();
