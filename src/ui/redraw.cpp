// redraw.cpp - see redraw.hpp.
#include "ui/redraw.hpp"

#include "app/app_state.hpp"
#include "ui/layers.hpp"
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
    // No pane covers the end of the rows beside the messages. The standard screen is blank there.
    for (WINDOW* pane : {app_state.screen, app_state.message_pane, app_state.server_pane,
                         app_state.status_pane, app_state.key_line})
        redraw_window(pane);
}

} // namespace

void redraw_all()
{
    const screen_batch together;
    WINDOW* const page = layers_page_in_front();
    if (page != nullptr)
        redraw_window(page);
    else
        redraw_panes();
}

void help_toggle()
{
    app_state.help_shown = app_state.help_shown != 0 ? 0 : 1;
    app_state.is_help_over_settings = true;
    redraw_all();
}
