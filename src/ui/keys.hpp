// keys.hpp - the one door through which keys come in.
//
// Terminals send ALT+letter in three forms: the byte with bit 7 set, the same as a two-byte UTF-8
// character, or Escape followed at once by the letter. It is always returned as the letter with bit
// 7 set. In UTF-8, a character of three or four bytes is key_unknown. Enter is 10, ^H is 8 and 127
// is KEY_BACKSPACE on every terminal type.
#pragma once

#include <ncurses.h>

constexpr int key_enter = 10;
constexpr int key_escape = 27;

/// A character that has no byte of its own. Its low eight bits are those of "?".
constexpr int key_unknown = 0x2000 | '?';

/// The key that CTRL and a letter make.
constexpr int control(char letter)
{
    return letter & 0x1F;
}

/// Leaves the program, from wherever keys are commands.
constexpr int key_exit = control('X');

/// Teaches curses the keys above. Call once for each screen, after it was started.
void keys_init();

/// The next key typed, or ERR when there is none. Never waits longer than a lone Escape needs. When
/// the program's terminal has vanished, SIGHUP is raised for the next pause, as if it had been
/// sent. window: where keypad mode is on and no read waits; null reads from the standard screen.
int key_read(WINDOW* window);

/// Gives a key back that key_read has returned; the next call returns it again.
void key_give_back(int key);

/// As key_read, for text being edited: where the terminal sends 8 for its Backspace key, 8 is
/// KEY_BACKSPACE.
int key_read_for_prompt(WINDOW* window);
