// screen.cpp - see screen.hpp.
#include "ui/screen.hpp"

#include "app/app_state.hpp"
#include "data/settings_page.hpp"
#include "ui/colours.hpp"
#include "ui/glyphs.hpp"
#include "ui/help.hpp"
#include "ui/keys.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"
#include "ui/screen_size.hpp"
#include "ui/server_pane.hpp"
#include "ui/terminal_rescue.hpp"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <initializer_list>

namespace
{

constexpr const char* author_credit = "the team";
constexpr const char* key_line_text = "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, "
                                      "^L Connect, ^R ServerList, ^X Exit";

void define_colours()
{
    start_color();
    for (const colour_pair& pair : colour_pairs)
        init_pair(colour_number(pair.name), pair.foreground, pair.background);
}

bool full_screen_windows_open()
{
    app_state.help_win = popup_open(COLS, LINES, 0, 0, true, colour::frame, false);
    if (app_state.help_win == nullptr)
        return false;
    help_fill();
    app_state.settings_win = popup_open(COLS, LINES, 0, 0, true, colour::frame, true);
    if (app_state.settings_win == nullptr)
        return false;
    settings_dialog();
    settings_values_draw();
    return true;
}

bool panes_open()
{
    app_state.server_pane =
        popup_open(std::min(27, COLS), LINES - 1, 0, 0, false, colour::frame, true);
    if (app_state.server_pane == nullptr)
        return false;
    // Keys are read from this pane also while the terminal is too small for the others.
    keypad(app_state.server_pane, TRUE);
    app_state.message_pane = popup_open(COLS - 28, LINES - 6, 27, 0, true, colour::frame, false);
    if (app_state.message_pane == nullptr)
        return false;
    app_state.status_pane = popup_open(COLS - 26, 6, 26, LINES - 7, true, colour::frame, true);
    return app_state.status_pane != nullptr;
}

/// The status pane's left edge lies on the server list's right frame.
void frames_join()
{
    mvwaddch(app_state.status_pane, 0, 0, ACS_LTEE);
    mvwaddch(app_state.status_pane, 5, 0, ACS_BTEE);
    mvwaddch(app_state.status_pane, 0, COLS - 27, ACS_RTEE);
    window_show(app_state.status_pane);
}

bool key_line_open()
{
    app_state.key_line = newwin(1, COLS, LINES - 1, 0);
    if (app_state.key_line == nullptr)
        return false;
    noecho();
    nodelay(app_state.key_line, TRUE);
    cbreak();
    curs_set(0);
    scrollok(app_state.key_line, FALSE);
    glyphs_attribute(app_state.key_line, colour::bar, false);
    line_blank(app_state.key_line, 0, 0, COLS);
    glyphs_write_at(app_state.key_line, 0, 0, key_line_text);
    window_show(app_state.key_line);
    return true;
}

void terminal_modes_set()
{
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    cbreak();
    noecho();
}

void windows_close()
{
    WINDOW** const windows[] = {&app_state.key_line,    &app_state.settings_win,
                                &app_state.status_pane, &app_state.message_pane,
                                &app_state.server_pane, &app_state.help_win};
    for (WINDOW** window : windows) {
        window_erase(*window);
        *window = nullptr;
    }
}

void standard_screen_blank()
{
    if (app_state.is_screen_lost)
        return;
    area_blank(stdscr, LINES, COLS, A_NORMAL);
    window_show(stdscr);
}

/// Shows the server list whole, and the tees of the status pane on the column they share again.
void panes_touch()
{
    for (WINDOW* pane : {app_state.server_pane, app_state.status_pane}) {
        if (pane == nullptr)
            continue;
        touchwin(pane);
        window_show(pane);
    }
}

/// Ends the screen of the former size.
void screen_leave()
{
    standard_screen_blank();
    endwin();
    // At once, or keys typed meanwhile would be echoed, and a ^D taken for the end of the input.
    reset_prog_mode();
}

/// Builds a screen of the new size, and shows it; without the memory for that the screen is lost.
void screen_rebuild()
{
    app_state.screen = stdscr;
    clearok(curscr, TRUE);
    terminal_modes_set();
    {
        const screen_batch whole_screen;
        screen_build();
        app_state.selected = 1;
        server_list_draw();
        if (app_state.settings_shown != 0 || app_state.help_shown != 0)
            redraw_all();
        else
            panes_touch();
        app_state.is_screen_lost = !has_memory_for_screen();
    }
    screen_settle();
}

} // namespace

void shell_modes_note()
{
    app_state.has_shell_modes = tcgetattr(STDIN_FILENO, &app_state.shell_modes) == 0;
    if (app_state.terminal != nullptr)
        def_shell_mode();
}

bool screen_start()
{
    shell_modes_note();
    app_state.terminal = newterm(nullptr, stdout, stdin);
    if (app_state.terminal == nullptr)
        return false;
    terminal_rescue_prepare();
    app_state.screen = stdscr;
    def_prog_mode();
    use_legacy_coding(1);
    terminal_modes_set();
    keys_init();
    return true;
}

int screen_build()
{
    define_colours();
    if (!full_screen_windows_open() || !panes_open())
        return 0;
    wsetscrreg(app_state.message_pane, 1, LINES - 9);
    frames_join();
    if (!key_line_open())
        return 0;
    pane_printf(app_state.status_pane, colour::notice, status_column, status_row, true, false,
                "NCurses tovrikclient V%s - Written by %s", client_version, author_credit);
    return 1;
}

void on_resize(int)
{
    popup_close();
    windows_close();
    if (!app_state.is_screen_lost)
        screen_leave();
    app_state.is_screen_lost = !screen_size_follow();
    if (!app_state.is_screen_lost)
        screen_rebuild();
    // Curses' own records of the screen may disagree now; it would write beyond them. Once more,
    // then, in the next pause.
    if (app_state.is_screen_lost)
        raise(SIGWINCH);
}

void screen_resume()
{
    const winsize size = screen_size_now();
    if (size.ws_row != LINES || size.ws_col != COLS)
        return on_resize(SIGWINCH);
    // After a stop that could not be seen coming, the shell has changed the terminal's modes; only
    // a screen that was ended has them set again by the next refresh.
    if (!isendwin())
        endwin();
    popup_close();
    clearok(curscr, TRUE);
    redraw_all();
}

void screen_clear()
{
    WINDOW** const panes[] = {&app_state.status_pane, &app_state.message_pane,
                              &app_state.server_pane, &app_state.key_line,
                              &app_state.help_win,    &app_state.settings_win};
    for (WINDOW** pane : panes) {
        if (*pane != nullptr)
            delwin(*pane);
        *pane = nullptr;
    }
    standard_screen_blank();
}

void screen_end()
{
    endwin();
    // What curses holds goes with the program. Asked to release it, curses needs memory for that,
    // and crashes without.
    app_state.terminal = nullptr;
    app_state.screen = nullptr;
}
