// terminal_type.hpp - what the terminal's type says about it.
//
// The header that declares these look-ups defines hundreds of common words as macros, so no other
// file includes it.
#pragma once

#include <cstdint>

/// The texts that the program asks for.
enum class terminal_text : std::uint8_t {
    attributes_off,
    first_colours, // those that the terminal had before
    keypad_off,
    meta_off, // the mode of the ALT key that curses' meta switches on
    full_screen_off,
    cursor_on,
    backspace, // what the key sends
};

/// The sequence that the terminal's type has for a text. Null if it has none, and before curses
/// knows the type. Borrowed from curses.
const char* terminal_sequence(terminal_text which);

/// Expands the delays of a sequence and hands its bytes to `put` one by one.
void terminal_sequence_expand(const char* sequence, int (*put)(int byte));
