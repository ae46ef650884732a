// glyphs.hpp - the one door through which text reaches a window.
//
// Inside the program, all text is ISO-8859-1 bytes. Here each byte becomes one cell: a character
// that the terminal understands, or a harmless stand-in for a byte that could drive the terminal.
#pragma once

#include "ui/colours.hpp"

#include <ncurses.h>
#include <string_view>

// All of these accept a null window and then do nothing.

/// Writes text at the window's cursor in its current attribute, one cell a byte. Control characters
/// and bytes 0x80 to 0x9F become stand-ins. Stops where curses refuses: the window is full.
void glyphs_write(WINDOW* window, std::string_view text);

/// Writes text at a place. Nothing is written when the place is outside the window.
void glyphs_write_at(WINDOW* window, int row, int column, std::string_view text);

/// Writes text at a place and leaves out what would go beyond the window's last column. Returns the
/// column after what was written.
int glyphs_write_to_edge(WINDOW* window, int row, int column, std::string_view text);

/// As glyphs_write_to_edge, but keeps off the window's last column, where its frame is.
int glyphs_write_to_frame(WINDOW* window, int row, int column, std::string_view text);

/// Ends the line at the cursor: the rest of it is blanked and the next text begins below. A window
/// that scrolls makes room for it.
void glyphs_end_line(WINDOW* window);

/// Sets the attribute that the next text is written in: a colour pair, bold or not.
void glyphs_attribute(WINDOW* window, colour pair, bool bold);
