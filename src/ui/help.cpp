// help.cpp - see help.hpp.
#include "ui/help.hpp"

#include "app/app_state.hpp"
#include "ui/pane.hpp"

void help_fill()
{
    pane_printf(app_state.help_win, 1, 2, 0, true, false, "[ ncurses tovrik client - Help ]");
    pane_printf(app_state.help_win, 2, COLS - 22, LINES - 1, true, false, "[ To exit press ^H ]");
}
