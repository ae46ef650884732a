// layers.hpp - what lies over what on the screen.
//
// From the lowest to the highest: the standard screen, seen where no pane is; the panes, of which
// the status pane covers the edges of its neighbours; the settings and the help while they are
// shown; popup_win; dialog_win; modal_win.
#pragma once

#include <ncurses.h>

/// The page that covers the panes: the settings or the help, and of both the one that came last.
/// Null while neither is shown.
WINDOW* layers_page_in_front();

/// Adds what was drawn in a window to the next update, and over it everything that lies above, so
/// that nothing of the window is seen through that. A window that is not in app_state lies on top.
void layers_add(WINDOW* window);

/// Adds the open windows, those above the pages, to the next update.
void layers_add_open_windows();
