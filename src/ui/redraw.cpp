// redraw.cpp - see redraw.hpp.
#include "ui/redraw.hpp"

#include "app/app_state.hpp"

#include <cstddef>
#include <cstdlib>
#include <span>

namespace
{

/// More than curses asks for when it makes its tables for the highest terminal.
constexpr std::size_t screen_tables_bytes = 256UL * 1024;

void mark_all_lines(WINDOW* window)
{
    if (window == nullptr)
        return;
    touchwin(window);
    wredrawln(window, 0, getmaxy(window));
}

/// Curses takes over a size that the terminal has got meanwhile by itself, and reads beyond its own
/// lines when a window begins outside of it.
bool is_within_screen(WINDOW* window)
{
    return getbegx(window) < getmaxx(newscr) && getbegy(window) < getmaxy(newscr);
}

/// Puts windows on the screen in this order; what they overlap is sent to the terminal once.
void show_in_order(std::span<WINDOW* const> windows)
{
    if (app_state.is_screen_lost)
        return;
    const screen_batch together;
    for (WINDOW* window : windows) {
        if (window != nullptr && is_within_screen(window))
            wnoutrefresh(window);
    }
}

void redraw_window(WINDOW* window)
{
    mark_all_lines(window);
    show_in_order({&window, 1});
}

} // namespace

void window_show(WINDOW* window)
{
    show_in_order({&window, 1});
}

screen_batch::screen_batch()
{
    ++app_state.screen_batches;
}

screen_batch::~screen_batch()
{
    if (--app_state.screen_batches == 0 && !app_state.is_screen_lost)
        doupdate();
}

bool has_memory_for_screen()
{
    // Volatile, or the compiler takes such an allocation for granted.
    void* volatile probe = std::malloc(screen_tables_bytes);
    const bool is_there = probe != nullptr;
    std::free(probe);
    return is_there;
}

void screen_settle()
{
    if (!app_state.is_screen_lost)
        doupdate();
}

void redraw_all()
{
    if (app_state.settings_shown != 0)
        return redraw_window(app_state.settings_win);
    if (app_state.help_shown != 0)
        return redraw_window(app_state.help_win);
    // The status pane comes after the server list, so that its tees lie on the column they share.
    WINDOW* const panes[] = {app_state.message_pane, app_state.server_pane, app_state.status_pane,
                             app_state.key_line};
    for (WINDOW* pane : panes)
        mark_all_lines(pane);
    show_in_order(panes);
}

void help_toggle()
{
    app_state.help_shown = app_state.help_shown != 0 ? 0 : 1;
    if (app_state.help_shown != 0)
        redraw_window(app_state.help_win);
    else
        redraw_all();
}
