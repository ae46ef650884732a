// popup.cpp - see popup.hpp.
#include "ui/popup.hpp"

#include "app/app_state.hpp"
#include "data/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/redraw.hpp"

#include <cstring>
#include <initializer_list>

namespace
{

heap_text blanks_new(int room)
{
    return heap_text{room > 0 ? static_cast<char*>(std::calloc(static_cast<size_t>(room), 1))
                              : nullptr};
}

void interior_fill(WINDOW* window, char* line, int width, int height)
{
    if (width <= 2)
        return;
    std::memset(line, ' ', static_cast<size_t>(width) - 2);
    for (int row = 1; row <= height - 2; ++row)
        glyphs_write_at(window, row, 1, line);
}

} // namespace

WINDOW* popup_open(int width, int height, int column, int row, bool scrolls, int pair, bool framed)
{
    const heap_text line = blanks_new(width + 2);
    // Curses reads beyond its own lines when it refreshes a window that begins outside the screen.
    if (!line || column >= COLS || row >= LINES)
        return nullptr;
    WINDOW* window = newwin(height, width, row, column);
    if (window == nullptr)
        return nullptr;
    glyphs_attribute(window, pair, false);
    werase(window);
    scrollok(window, scrolls);
    if (framed && width > 1 && height > 1)
        wborder(window, 0, 0, 0, 0, 0, 0, 0, 0);
    interior_fill(window, line.get(), width, height);
    glyphs_attribute(window, pair, false);
    wrefresh(window);
    noecho();
    nodelay(window, TRUE);
    for (int painted = 1; painted <= height - 3; ++painted)
        line_blank(window, painted, 1, width - 2);
    return window;
}

void window_erase(WINDOW* window)
{
    if (window == nullptr)
        return;
    werase(window);
    wrefresh(window);
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
        wrefresh(window);
    }
}

void line_blank(WINDOW* window, int row, int column, int count)
{
    const heap_text line = blanks_new(count + 1);
    if (!line)
        return;
    std::memset(line.get(), ' ', static_cast<size_t>(count));
    glyphs_write_at(window, row, column, line.get());
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
