// redraw.hpp - repaints whatever is in front: the panes, the settings page or the help.
#pragma once

#include <ncurses.h>

/// Shows what was drawn in a window: at once, or at the end of a screen_batch.
void window_show(WINDOW* window);

/// While one exists, windows are put together instead of shown one by one; at its end the terminal
/// gets what the screen has become, once. No pause may fall into it.
class screen_batch
{
public:
    screen_batch();
    ~screen_batch();
    screen_batch(const screen_batch&) = delete;
    screen_batch& operator=(const screen_batch&) = delete;
};

/// Whether there is memory for the first two updates of a new screen. Curses does not survive being
/// short of it in them.
bool has_memory_for_screen();

/// To be called behind the first update of a screen: has curses make the tables of its later ones,
/// by which it finds lines that moved, while it is known that there is memory for them.
void screen_settle();

/// Paints the window in front whole: the settings page or the help when one is shown, else the four
/// panes. Needs no content of theirs to have changed.
void redraw_all();

/// Brings the help to the front, or sends it back when it is there.
void help_toggle();
