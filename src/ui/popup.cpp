// popup.cpp - see popup.hpp.
#include "ui/popup.hpp"

#include "app/app_state.hpp"
#include "ui/glyphs.hpp"
#include "ui/redraw.hpp"

#include <initializer_list>

namespace
{

void interior_fill(WINDOW* window, int width, int height)
{
    for (int row = 1; width > 2 && row <= height - 2; ++row)
        line_blank(window, row, 1, width - 2);
}

} // namespace

WINDOW* popup_open(int width, int height, int column, int row, bool scrolls, colour pair,
                   bool framed)
{
    // Curses reads beyond its own lines when it refreshes a window that begins outside the screen.
    if (app_state.is_screen_lost || column >= COLS || row >= LINES)
        return nullptr;
    WINDOW* window = newwin(height, width, row, column);
    if (window == nullptr)
        return nullptr;
    glyphs_attribute(window, pair, false);
    werase(window);
    scrollok(window, scrolls);
    if (framed && width > 1 && height > 1)
        wborder(window, 0, 0, 0, 0, 0, 0, 0, 0);
    interior_fill(window, width, height);
    glyphs_attribute(window, pair, false);
    window_show(window);
    noecho();
    nodelay(window, TRUE);
    return window;
}

void window_erase(WINDOW* window)
{
    if (window == nullptr)
        return;
    werase(window);
    window_show(window);
    delwin(window);
}

void popup_close()
{
    if (app_state.popup_win == nullptr && app_state.dialog_win == nullptr)
        return;
    window_erase(app_state.popup_win);
    app_state.popup_win = nullptr;
    window_erase(app_state.dialog_win);
    app_state.dialog_win = nullptr;
    redraw_all();
}

void popup_raise()
{
    for (WINDOW* window : {app_state.popup_win, app_state.dialog_win}) {
        if (window == nullptr)
            continue;
        touchwin(window);
        window_show(window);
    }
}

void line_blank(WINDOW* window, int row, int column, int count)
{
    if (window == nullptr || count < 0 || wmove(window, row, column) == ERR)
        return;
    if (count > 0 && column + count < getmaxx(window)) {
        whline(window, ' ', count);
        wmove(window, row, column + count);
        return;
    }
    // Only written text goes on in the next row, or stops at the window's last cell.
    for (int written = 0; written < count; ++written)
        glyphs_write(window, " ");
}

int area_blank(WINDOW* window, int rows, int columns, attr_t attribute)
{
    if (window == nullptr)
        return ERR;
    wattrset(window, static_cast<int>(attribute));
    for (int row = 0; row < rows; ++row) {
        wmove(window, row, 0);
        for (int column = 0; column < columns; ++column)
            waddch(window, ' ');
    }
    return touchwin(window);
}
