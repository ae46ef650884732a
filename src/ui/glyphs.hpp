// glyphs.hpp - the one door through which text reaches a window.
//
// Inside, all text is ISO-8859-1 bytes. Here each byte becomes one cell: a character that the
// terminal understands, and a harmless stand-in for every byte that could drive the terminal.
#pragma once

#include "ui/colours.hpp"

#include <cstddef>
#include <ncurses.h>
#include <string_view>

/// Writes text at the window's cursor in its current attribute, one cell a byte. Control characters
/// and bytes 0x80 to 0x9F become stand-ins. Stops where curses refuses (the window is full).
/// Null window or text: nothing happens.
void glyphs_write(WINDOW* window, std::string_view text);

/// Writes text at a place; nothing is written when the place is outside the window.
void glyphs_write_at(WINDOW* window, int row, int column, std::string_view text);

/// Writes text at a place; what would go beyond the window's last column is left out.
/// The column behind what was written.
int glyphs_write_to_edge(WINDOW* window, int row, int column, std::string_view text);

/// Ends the line at the cursor: the rest of it is blanked and the next text begins below, where a
/// window that scrolls makes room for it.
void glyphs_end_line(WINDOW* window);

/// Sets the attribute that the next text is written in: a colour pair, bold or not.
void glyphs_attribute(WINDOW* window, colour pair, bool bold);
