// popup.hpp - makes every window of the program and closes the transient ones.
#pragma once

#include "ui/colours.hpp"

#include <ncurses.h>

/// Creates a window, paints its interior in a colour pair and shows it; reading from it never
/// waits. width, height: cells, frame included. column, row: its top left corner on the screen.
/// Null when it cannot be made or would begin outside the screen. The caller deletes it, or leaves
/// it to popup_close by storing it in popup_win or dialog_win.
WINDOW* popup_open(int width, int height, int column, int row, bool scrolls, colour pair,
                   bool framed);

/// Erases and deletes popup_win and dialog_win and repaints what they covered. Nothing happens when
/// neither exists.
void popup_close();

/// Shows popup_win and dialog_win, where they exist, above what was drawn under them since.
void popup_raise();

/// Erases a window on the screen and deletes it. Null is accepted.
void window_erase(WINDOW* window);

/// Writes `count` blanks at a place, in the window's current attribute; nothing when the place is
/// outside the window.
void line_blank(WINDOW* window, int row, int column, int count);

/// Blanks the first `rows` rows and `columns` columns in the given attribute.
/// What touching the window gives.
int area_blank(WINDOW* window, int rows, int columns, attr_t attribute);
