// window.hpp - makes windows, shows them, blanks them and deletes them.
#pragma once

#include "base/owners.hpp"
#include "ui/colours.hpp"

#include <memory>
#include <ncurses.h>

/// A window that is deleted at the end of its scope or record; null means "none".
using unique_window = std::unique_ptr<WINDOW, releaser<delwin>>;

/// Makes a window, paints its interior in a colour pair and shows it. No read from it ever waits.
/// width, height: in cells, frame included. column, row: of its top left corner on the screen.
/// Null when it cannot be made or would begin outside the screen. The caller deletes it, or stores
/// it in popup_win or dialog_win and leaves it to popup_close.
WINDOW* popup_open(int width, int height, int column, int row, bool scrolls, colour pair,
                   bool framed);

/// Shows what was drawn in a window, below what lies above it (layers.hpp): at once, or at the end
/// of a screen_batch. Null is accepted.
void window_show(WINDOW* window);

/// Shows a window whole, above what has been drawn over it since and below what lies above it. Null
/// is accepted.
void window_raise(WINDOW* window);

/// While one exists, windows are collected instead of shown one by one. At the end of the outermost
/// one the terminal gets the result in one update. No pause may happen meanwhile.
class screen_batch
{
public:
    screen_batch();
    ~screen_batch();
    screen_batch(const screen_batch&) = delete;
    screen_batch& operator=(const screen_batch&) = delete;
};

/// Erases a window from the screen and deletes it. popup_win and dialog_win stay seen, other things
/// that it covered are not painted again. Null is accepted.
void window_erase(WINDOW* window);

/// Writes `count` blanks at a place, in the window's current attribute. Nothing happens when the
/// place is outside the window.
void line_blank(WINDOW* window, int row, int column, int count);

/// Blanks what the frame of a window of this size encloses, in the window's current attribute.
void interior_blank(WINDOW* window, int width, int height);

/// Blanks the first `rows` rows and `columns` columns in the given attribute. Returns what curses
/// answers when the window is touched.
int area_blank(WINDOW* window, int rows, int columns, attr_t attribute);
