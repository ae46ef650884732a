// screen.cpp - see screen.hpp.
#include "ui/screen.hpp"

#include "app/app_state.hpp"
#include "data/settings_page.hpp"
#include "ui/colours.hpp"
#include "ui/curses_screen.hpp"
#include "ui/glyphs.hpp"
#include "ui/help.hpp"
#include "ui/keys.hpp"
#include "ui/layout.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"
#include "ui/server_pane.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_output.hpp"
#include "ui/terminal_rescue.hpp"
#include "ui/window.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace
{

constexpr const char* author_credit = "the team";
constexpr const char* key_line_text = "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, "
                                      "^L Connect, ^R ServerList, ^X Exit";

/// The fields of all panes and pages.
constexpr WINDOW* application_state::*windows[] = {
    &application_state::key_line,    &application_state::settings_win,
    &application_state::status_pane, &application_state::message_pane,
    &application_state::server_pane, &application_state::help_win,
};

void define_colours()
{
    start_color();
    for (const colour_pair& pair : colour_pairs)
        init_pair(colour_number(pair.name), pair.foreground, pair.background);
}

WINDOW* open_window(const screen_area& area, bool scrolls, bool framed)
{
    return popup_open(area.width, area.height, area.column, area.row, scrolls, colour::frame,
                      framed);
}

/// The pages come first, so that the panes lie on top of them.
bool open_pages()
{
    app_state.help_win = open_window(layout_page(), true, false);
    if (app_state.help_win == nullptr)
        return false;
    help_fill();
    app_state.settings_win = open_window(layout_page(), true, true);
    if (app_state.settings_win == nullptr)
        return false;
    settings_dialog();
    settings_values_draw();
    return true;
}

bool open_panes()
{
    app_state.server_pane = open_window(layout_server_pane(), false, true);
    if (app_state.server_pane == nullptr)
        return false;
    // Keys are read from this pane, even while the terminal is too small for the others.
    keypad(app_state.server_pane, TRUE);
    app_state.message_pane = open_window(layout_message_pane(), true, false);
    if (app_state.message_pane == nullptr)
        return false;
    app_state.status_pane = open_window(layout_status_pane(), true, true);
    return app_state.status_pane != nullptr;
}

/// The status pane's left edge lies on the server list's right frame.
void join_frames()
{
    mvwaddch(app_state.status_pane, 0, 0, ACS_LTEE);
    mvwaddch(app_state.status_pane, status_pane_height - 1, 0, ACS_BTEE);
    mvwaddch(app_state.status_pane, 0, layout_status_frame_column(), ACS_RTEE);
    window_show(app_state.status_pane);
}

bool open_key_line()
{
    const screen_area area = layout_key_line();
    app_state.key_line = newwin(area.height, area.width, area.row, area.column);
    if (app_state.key_line == nullptr)
        return false;
    noecho();
    nodelay(app_state.key_line, TRUE);
    cbreak();
    curs_set(0);
    scrollok(app_state.key_line, FALSE);
    glyphs_attribute(app_state.key_line, colour::bar, false);
    line_blank(app_state.key_line, 0, 0, area.width);
    glyphs_write_at(app_state.key_line, 0, 0, key_line_text);
    window_show(app_state.key_line);
    return true;
}

void set_terminal_modes()
{
    meta(stdscr, TRUE);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    cbreak();
    noecho();
}

void erase_windows()
{
    for (const auto window : windows)
        window_erase(std::exchange(app_state.*window, nullptr));
    // Its owner opens it anew, in its place on the new screen.
    app_state.modal_win = nullptr;
}

void blank_screen()
{
    if (!may_draw())
        return;
    area_blank(stdscr, LINES, COLS, A_NORMAL);
    window_show(stdscr);
}

/// Ends the screen of the former size.
void leave_screen()
{
    blank_screen();
    screen_leave();
    // At once, or keys typed meanwhile would be echoed, and a ^D taken for the end of the input.
    terminal_modes_take();
}

/// Builds a screen of the new size and shows it. If there is no memory for that, it is lost.
void rebuild_screen()
{
    app_state.screen = stdscr;
    ++app_state.screen_number;
    clearok(curscr, TRUE);
    set_terminal_modes();
    {
        const screen_batch whole_screen;
        screen_build();
        // Kept on purpose: the first server is selected, whichever was before.
        // Test: screen.a_resize_brings_the_bar_back_to_the_first_server.
        app_state.selected = 1;
        server_list_draw();
        screen_memory_check();
    }
    screen_settle();
}

/// Curses takes a size from the environment at the start and whenever it comes back to the screen.
/// It must not believe it where the terminal tells its own.
void forget_claimed_size()
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return;
    unsetenv("LINES");
    unsetenv("COLUMNS");
}

bool start_curses()
{
    std::FILE* stream = terminal_output_open();
    app_state.terminal = newterm(nullptr, stream, stdin);
    if (app_state.terminal == nullptr)
        terminal_output_close(stream);
    return app_state.terminal != nullptr;
}

/// Curses keeps the modes as well, for when it writes to the terminal itself.
void set_line_modes()
{
    def_prog_mode();
    cbreak();
    terminal_modes_complete();
    def_prog_mode();
}

} // namespace

void shell_modes_note()
{
    terminal_modes_note();
    if (app_state.terminal != nullptr)
        def_shell_mode();
}

bool screen_start()
{
    shell_modes_note();
    forget_claimed_size();
    if (!start_curses())
        return false;
    set_line_modes();
    terminal_rescue_prepare();
    terminal_output_choose();
    app_state.pause_work = screen_catch_up;
    app_state.screen = stdscr;
    use_legacy_coding(1);
    set_terminal_modes();
    keys_init();
    return true;
}

int screen_build()
{
    define_colours();
    if (!open_pages())
        return 0;
    // Blank where there will be no pane, so that the pages are not seen there.
    window_raise(app_state.screen);
    if (!open_panes())
        return 0;
    wsetscrreg(app_state.message_pane, message_first_row, layout_message_row());
    join_frames();
    if (!open_key_line())
        return 0;
    pane_printf(app_state.status_pane, colour::notice, status_column, status_row, true, false,
                "NCurses tovrikclient V%s - Written by %s", client_version, author_credit);
    return 1;
}

void on_resize(int)
{
    popup_close();
    erase_windows();
    if (may_draw())
        leave_screen();
    screen_size_follow();
    if (may_draw())
        rebuild_screen();
    // Retried in the next pause. Until then curses' own records of the screen may disagree, and it
    // would write beyond them.
    if (!may_draw())
        raise(SIGWINCH);
}

void screen_suspend()
{
    if (!isendwin())
        screen_leave();
    if (!terminal_output_finish())
        terminal_rescue_write();
    terminal_modes_give_back();
}

void screen_resume()
{
    const winsize size = terminal_size();
    if (size.ws_row != LINES || size.ws_col != COLS)
        return on_resize(SIGWINCH);
    // After a stop without warning, the shell has changed the terminal's modes. The next refresh
    // sets them again only if the screen was ended.
    if (!isendwin())
        screen_leave();
    terminal_modes_take();
    meta(stdscr, TRUE);
    popup_close();
    clearok(curscr, TRUE);
    redraw_all();
}

void screen_clear()
{
    for (const auto window : windows)
        const unique_window deleted{std::exchange(app_state.*window, nullptr)};
    blank_screen();
}

void screen_end()
{
    screen_suspend();
    // What curses holds goes with the program. To release it, curses would need memory, and it
    // crashes when that runs out.
    app_state.terminal = nullptr;
    app_state.screen = nullptr;
}
