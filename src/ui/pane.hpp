// pane.hpp - prints formatted text in the panes.
#pragma once

#include "ui/colours.hpp"

#include <ncurses.h>

/// Formats a text (cut at 4,093 characters) and writes it into a pane in a colour pair.
/// scroll_first: scrolls the pane by one line before writing.
/// Lines of one text are written at the same place: the second replaces the first; after the second
/// and every further line the pane scrolls up.
/// Writing into the status pane first scrolls the lines inside its frame. A format that holds "%*"
/// or
/// "%]" is shown as it stands. Null format, or null window (a pane that a tiny terminal has no
/// space for): nothing happens.
void pane_printf(WINDOW* window, colour pair, int column, int row, bool bold, bool scroll_first,
                 const char* format, ...) __attribute__((format(printf, 7, 8)));

/// Reports one line in the status pane, as its newest, with blanks for line feeds. Errors, notices
/// and successes are bold, others plain. The format is treated as pane_printf treats it.
void status_report(colour pair, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Moves rows first+1 to last+1 of a window up by one, columns 1 to width - 1, and blanks row
/// last+1 from column 1 for `width` cells.
void status_scroll(WINDOW* window, int first, int last, int width);

/// Prints the title of a page at its top left and its hint at its bottom right.
void page_titles_print(WINDOW* window, const char* title, const char* hint);
