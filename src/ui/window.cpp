// window.cpp - see window.hpp.
#include "ui/window.hpp"

#include "app/app_state.hpp"
#include "ui/curses_screen.hpp"
#include "ui/glyphs.hpp"
#include "ui/layers.hpp"

WINDOW* popup_open(int width, int height, int column, int row, bool scrolls, colour pair,
                   bool framed)
{
    WINDOW* window = may_draw_at(column, row) ? newwin(height, width, row, column) : nullptr;
    if (window == nullptr)
        return nullptr;
    glyphs_attribute(window, pair, false);
    werase(window);
    scrollok(window, scrolls);
    if (framed && width > 1 && height > 1)
        wborder(window, 0, 0, 0, 0, 0, 0, 0, 0);
    // Kept on purpose: the edge of a window without a frame is not painted either.
    // Test: popup.paints_its_interior_but_not_its_edge.
    interior_blank(window, width, height);
    glyphs_attribute(window, pair, false);
    window_show(window);
    noecho();
    nodelay(window, TRUE);
    return window;
}

void window_show(WINDOW* window)
{
    // An update without a window, too, would take the terminal back after the end of the screen.
    if (window == nullptr)
        return;
    const screen_batch single;
    layers_add(window);
}

void window_raise(WINDOW* window)
{
    if (window != nullptr)
        touchwin(window);
    window_show(window);
}

screen_batch::screen_batch()
{
    ++app_state.screen_batches;
}

screen_batch::~screen_batch()
{
    if (--app_state.screen_batches == 0)
        screen_update();
}

void window_erase(WINDOW* window)
{
    if (window == nullptr)
        return;
    const screen_batch together;
    werase(window);
    window_show(window);
    delwin(window);
    layers_add_open_windows();
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
    // A run that reaches the edge is written as text, so that it goes on in the next row or stops
    // at the window's last cell.
    for (int written = 0; written < count; ++written)
        glyphs_write(window, " ");
}

void interior_blank(WINDOW* window, int width, int height)
{
    for (int row = 1; width > 2 && row <= height - 2; ++row)
        line_blank(window, row, 1, width - 2);
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
