// redraw.cpp - see redraw.hpp.
#include "ui/redraw.hpp"

#include "app/app_state.hpp"
#include "ui/window.hpp"

#include <initializer_list>

namespace
{

/// Makes the next update send every line of a window, as if the terminal had lost them.
void forget_shown_lines(WINDOW* window)
{
    if (window == nullptr)
        return;
    touchwin(window);
    wredrawln(window, 0, getmaxy(window));
}

void redraw_window(WINDOW* window)
{
    forget_shown_lines(window);
    window_show(window);
}

void redraw_panes()
{
    const screen_batch together;
    // The status pane comes after the server list, so that its tees lie on the column they share.
    for (WINDOW* pane :
         {app_state.message_pane, app_state.server_pane, app_state.status_pane, app_state.key_line})
        redraw_window(pane);
}

} // namespace

void redraw_all()
{
    if (app_state.settings_shown != 0)
        redraw_window(app_state.settings_win);
    else if (app_state.help_shown != 0)
        redraw_window(app_state.help_win);
    else
        redraw_panes();
}

void help_toggle()
{
    app_state.help_shown = app_state.help_shown != 0 ? 0 : 1;
    if (app_state.help_shown != 0)
        redraw_window(app_state.help_win);
    else
        redraw_all();
}
