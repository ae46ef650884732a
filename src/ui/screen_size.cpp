// screen_size.cpp - see screen_size.hpp.
#include "ui/screen_size.hpp"

#include "ui/redraw.hpp"

#include <algorithm>
#include <ncurses.h>
#include <unistd.h>

namespace
{

/// Changes the size of one of curses' own windows. While only its height changes, curses goes on
/// using its lines, and frees them all the same when memory for others is short.
bool window_fit(WINDOW* window, int rows, int columns)
{
    const bool is_higher_only = getmaxx(window) == columns && getmaxy(window) != rows;
    if (is_higher_only && wresize(window, getmaxy(window), columns + 1) == ERR)
        return false;
    return wresize(window, rows, columns) != ERR;
}

bool screen_windows_fit(int rows, int columns)
{
    return window_fit(stdscr, rows, columns) && window_fit(curscr, rows, columns) &&
           window_fit(newscr, rows, columns);
}

/// Gives curses' own windows a size. False when its memory is too short, which it does not always
/// tell.
bool size_set(const winsize& size)
{
    if (!screen_windows_fit(size.ws_row, size.ws_col))
        return false;
    resize_term(size.ws_row, size.ws_col);
    return screen_windows_fit(size.ws_row, size.ws_col);
}

} // namespace

winsize screen_size_now()
{
    winsize size = {};
    const bool is_known =
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
    if (!is_known) {
        size.ws_row = static_cast<unsigned short>(LINES);
        size.ws_col = static_cast<unsigned short>(COLS);
    }
    // With a single column curses reads before its own lines.
    size.ws_col = std::max<unsigned short>(size.ws_col, 2);
    return size;
}

bool screen_size_follow()
{
    if (!size_set(screen_size_now()) || !has_memory_for_screen())
        return false;
    // In its first update after endwin, curses asks for the size itself, and takes over one that
    // has changed since: that must not fall into a time in which there are windows of ours.
    doupdate();
    return size_set(screen_size_now());
}
