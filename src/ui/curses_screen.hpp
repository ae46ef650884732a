// curses_screen.hpp - curses' own screen: whether it may be drawn on, and its size.
//
// At some points curses crashes when it runs out of memory. All that is known about this is kept
// here, and drawing code asks a single question: may_draw.
#pragma once

#include <sys/ioctl.h>

/// Whether anything may be drawn, or read from a window, which draws it. False while the screen is
/// lost: curses ran out of memory for it, and no resize has succeeded since.
bool may_draw();

/// Whether a window may be drawn that begins at this place of the screen. False outside the screen
/// as well: curses would read beyond its own lines.
bool may_draw_at(int column, int row);

/// Declares the screen lost unless there is memory for its first two updates. Curses does not
/// survive running out of it in them. Call before the first update of a new screen.
void screen_memory_check();

/// Updates the terminal: sends it what has changed. As long as it is behind with its output, this
/// is put off.
void screen_update();

/// Gives a terminal that is behind what it takes, and the update that was put off once it has all.
/// If output had to be dropped, the screen is drawn whole. Done before every pause.
void screen_catch_up();

/// Ends the screen for curses, until the next update begins it anew. The terminal's modes may have
/// been given back.
void screen_leave();

/// Has curses make the tables by which it finds lines that moved, while there is known to be memory
/// for them. Call after the first update of a new screen.
void screen_settle();

/// The terminal's present size, in rows and columns, two columns at least. A terminal that does not
/// tell its size has the one it had.
winsize terminal_size();

/// Makes curses' screen as large as the terminal. Call while there are no windows of ours. If
/// curses runs out of memory the screen is lost, since its own windows may differ in size then.
/// Otherwise it may be drawn on, again if it was lost before.
void screen_size_follow();
