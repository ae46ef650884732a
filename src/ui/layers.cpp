// layers.cpp - see layers.hpp.
#include "ui/layers.hpp"

#include "app/app_state.hpp"
#include "ui/curses_screen.hpp"

#include <algorithm>
#include <iterator>

namespace
{

bool is_covered_by_all(const WINDOW* window)
{
    const WINDOW* const lowest[] = {app_state.screen,       app_state.server_pane,
                                    app_state.message_pane, app_state.key_line,
                                    app_state.settings_win, app_state.help_win};
    return std::ranges::find(lowest, window) != std::end(lowest);
}

void add_changes(WINDOW* window)
{
    if (window != nullptr && may_draw_at(getbegx(window), getbegy(window)))
        wnoutrefresh(window);
}

void add_whole(WINDOW* window)
{
    if (window != nullptr)
        touchwin(window);
    add_changes(window);
}

} // namespace

WINDOW* layers_page_in_front()
{
    const bool is_help_covered = app_state.settings_shown != 0 && !app_state.is_help_over_settings;
    if (app_state.help_shown != 0 && !is_help_covered)
        return app_state.help_win;
    return app_state.settings_shown != 0 ? app_state.settings_win : nullptr;
}

void layers_add(WINDOW* window)
{
    add_changes(window);
    WINDOW* const covers[] = {app_state.status_pane, layers_page_in_front(), app_state.popup_win,
                              app_state.dialog_win, app_state.modal_win};
    WINDOW* const* above = std::ranges::find(covers, window);
    if (above != std::end(covers))
        ++above;
    else if (is_covered_by_all(window))
        above = std::begin(covers);
    std::for_each(above, std::end(covers), add_whole);
}

void layers_add_open_windows()
{
    for (WINDOW* window : {app_state.popup_win, app_state.dialog_win, app_state.modal_win})
        add_whole(window);
}
