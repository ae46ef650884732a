// curses_screen.cpp - see curses_screen.hpp.
#include "ui/curses_screen.hpp"

#include "app/app_state.hpp"
#include "ui/terminal_output.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

namespace
{

/// More than curses asks for when it makes its tables for the highest terminal.
constexpr std::size_t screen_tables_bytes = 256UL * 1024;

bool has_memory_for_screen()
{
    // Volatile, or the compiler takes such an allocation for granted.
    void* volatile probe = std::malloc(screen_tables_bytes);
    const bool is_there = probe != nullptr;
    std::free(probe);
    return is_there;
}

/// Changes the size of one of curses' own windows. When only the height changes, curses goes on
/// using the window's lines, but frees them if it runs out of memory for others. So the width is
/// changed as well.
bool fit_window(WINDOW* window, int rows, int columns)
{
    const bool is_higher_only = getmaxx(window) == columns && getmaxy(window) != rows;
    if (is_higher_only && wresize(window, getmaxy(window), columns + 1) == ERR)
        return false;
    return wresize(window, rows, columns) != ERR;
}

bool fit_windows(int rows, int columns)
{
    return fit_window(stdscr, rows, columns) && fit_window(curscr, rows, columns) &&
           fit_window(newscr, rows, columns);
}

/// Gives curses' own windows the terminal's size. False when memory runs out, which curses does not
/// always tell.
bool follow_terminal()
{
    const winsize size = terminal_size();
    if (!fit_windows(size.ws_row, size.ws_col))
        return false;
    resize_term(size.ws_row, size.ws_col);
    return fit_windows(size.ws_row, size.ws_col);
}

void send_update()
{
    const bool is_behind = !terminal_output_carry();
    terminal_output_choose();
    doupdate();
    if (!is_behind)
        terminal_output_hurry();
}

bool follow_through_first_update()
{
    if (!follow_terminal() || !has_memory_for_screen())
        return false;
    // In its first update after endwin, curses asks for the size itself, and takes over one that
    // has changed since. This must not happen while there are windows of ours.
    send_update();
    return follow_terminal();
}

/// The terminal may have missed anything, the mode of its screen included.
void renew_screen()
{
    screen_leave();
    meta(stdscr, TRUE);
    clearok(curscr, TRUE);
    screen_update();
}

} // namespace

bool may_draw()
{
    return !app_state.is_screen_lost;
}

bool may_draw_at(int column, int row)
{
    // Curses may have taken over a smaller size by itself.
    return may_draw() && column < getmaxx(newscr) && row < getmaxy(newscr);
}

void screen_memory_check()
{
    app_state.is_screen_lost = !has_memory_for_screen();
}

void screen_update()
{
    if (!may_draw())
        return;
    // The first update after the end of the screen begins it again, for what is written next.
    app_state.is_update_due = !terminal_output_carry() && !isendwin();
    if (app_state.is_update_due)
        return;
    send_update();
}

void screen_catch_up()
{
    if (app_state.terminal == nullptr || !terminal_output_carry() || !may_draw())
        return;
    if (terminal_output_take_loss())
        renew_screen();
    else if (app_state.is_update_due)
        screen_update();
}

void screen_leave()
{
    // The end of the screen ends keypad mode by itself, but not this one.
    meta(stdscr, FALSE);
    endwin();
}

void screen_settle()
{
    screen_update();
}

winsize terminal_size()
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

void screen_size_follow()
{
    app_state.is_screen_lost = !follow_through_first_update();
}
