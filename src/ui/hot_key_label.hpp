// hot_key_label.hpp - labels that show which letter is their hot key.
#pragma once

#include <ncurses.h>

/// What stands in a label before the letter of its hot key. It is not shown itself.
constexpr char hot_key_sign = '~';

/// Writes a label at a place, in the window's current attribute, and the letter of its hot key in
/// bold plain text, which is left plain again afterwards. Returns the number of cells that the
/// label takes. When memory runs out, nothing is written and 0 returned.
int hot_key_label_draw(WINDOW* window, int row, int column, const char* label);
