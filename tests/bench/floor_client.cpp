// floor_client.cpp - the smallest curses program with the client's windows: the floor with which
// the client's start, memory and idle work are compared.
//
// Draws what the client shows after its start, each visible window once, then reads keys at the
// client's pace until ^X. Shows what comes through the pipe "messages" in its folder, if there is
// one, as the client shows a transmission. Uses no code of the client, so that it does not change
// with the client.
#include <clocale>
#include <cstdio>
#include <fcntl.h>
#include <ncurses.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace
{

constexpr int configured_servers = 100;
constexpr int key_exit = 24;
constexpr long round_ns = 40'000'000;
constexpr int server_columns = 27;
constexpr int bar_cells = 24;

constexpr short colours[][2] = {
    {COLOR_BLUE, COLOR_BLACK},  {COLOR_WHITE, COLOR_BLACK}, {COLOR_BLUE, COLOR_WHITE},
    {COLOR_WHITE, COLOR_CYAN},  {COLOR_RED, COLOR_BLACK},   {COLOR_YELLOW, COLOR_BLACK},
    {COLOR_GREEN, COLOR_BLACK}, {COLOR_BLACK, COLOR_WHITE}, {COLOR_WHITE, COLOR_BLACK},
    {COLOR_WHITE, COLOR_BLUE},  {COLOR_CYAN, COLOR_BLACK},  {COLOR_RED, COLOR_BLUE},
    {COLOR_BLUE, COLOR_BLACK},  {COLOR_WHITE, COLOR_BLACK}, {COLOR_MAGENTA, COLOR_BLACK},
};

void set_colour(WINDOW* window, int pair, bool bold)
{
    wattr_set(window, bold ? A_BOLD : A_NORMAL, static_cast<short>(pair), nullptr);
}

void start_curses()
{
    initscr();
    keypad(stdscr, TRUE);
    cbreak();
    noecho();
    curs_set(0);
    start_color();
    for (short pair = 1; pair <= 15; ++pair)
        init_pair(pair, colours[pair - 1][0], colours[pair - 1][1]);
}

WINDOW* open_window(int rows, int columns, int row, int column, bool framed)
{
    WINDOW* window = newwin(rows, columns, row, column);
    nodelay(window, TRUE);
    set_colour(window, 1, false);
    if (framed)
        wborder(window, 0, 0, 0, 0, 0, 0, 0, 0);
    return window;
}

/// Help and settings behind the panes: filled, never shown.
void open_hidden_windows()
{
    WINDOW* help = open_window(LINES, COLS, 0, 0, false);
    mvwaddstr(help, 0, 2, "[ ncurses tovrik client - Help ]");
    WINDOW* settings = open_window(LINES, COLS, 0, 0, true);
    mvwaddstr(settings, 0, 2, "[ ncurses tovrik client - Settings ]");
}

WINDOW* draw_server_pane()
{
    WINDOW* pane = open_window(LINES - 1, server_columns, 0, 0, true);
    keypad(pane, TRUE);
    set_colour(pane, 8, false);
    mvwaddwstr(pane, 1, 1, L"  \u00BB available Servers \u00AB  ");
    for (int server = 0; server < configured_servers && server < LINES - 4; ++server) {
        char name[bar_cells + 1];
        std::snprintf(name, sizeof name, "station-%03d", server + 1);
        set_colour(pane, 7, true);
        mvwaddch(pane, server + 2, 1, ' ');
        set_colour(pane, 2, true);
        wprintw(pane, "%-*s", bar_cells, name);
    }
    mvwchgat(pane, 2, 2, bar_cells, A_NORMAL, 8, nullptr);
    return pane;
}

void draw_status_pane()
{
    WINDOW* pane = open_window(6, COLS - 26, LINES - 7, 26, true);
    mvwaddch(pane, 0, 0, ACS_LTEE);
    mvwaddch(pane, 5, 0, ACS_BTEE);
    mvwaddch(pane, 0, COLS - 27, ACS_RTEE);
    set_colour(pane, 6, true);
    mvwaddstr(pane, 3, 1, "NCurses tovrikclient V0.02.001 - Written by the team");
    set_colour(pane, 7, true);
    mvwaddstr(pane, 4, 1, "Loading private serverlist './ncursesclient.conf'");
    wrefresh(pane);
}

void draw_key_line()
{
    WINDOW* line = open_window(1, COLS, LINES - 1, 0, false);
    wbkgdset(line, static_cast<chtype>(COLOR_PAIR(8)) | ' ');
    werase(line);
    mvwaddstr(line, 0, 0,
              "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, "
              "^L Connect, ^R ServerList, ^X Exit");
    wrefresh(line);
}

WINDOW* draw_message_pane()
{
    WINDOW* pane = open_window(LINES - 6, COLS - 28, 0, server_columns, false);
    scrollok(pane, TRUE);
    wsetscrreg(pane, 1, LINES - 9);
    wrefresh(pane);
    return pane;
}

void write_line(WINDOW* pane, std::string_view line)
{
    wmove(pane, LINES - 9, 1);
    waddnstr(pane, line.data(), static_cast<int>(line.size()));
    wscrl(pane, 1);
}

void show_message(WINDOW* pane, int pipe)
{
    char bytes[4096];
    const ssize_t length = read(pipe, bytes, sizeof bytes);
    if (length <= 0)
        return;
    set_colour(pane, 2, false);
    std::string_view text{bytes, static_cast<std::size_t>(length)};
    for (std::size_t end = 0; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1))
        write_line(pane, text.substr(0, end));
    wrefresh(pane);
}

} // namespace

int main()
{
    std::setlocale(LC_CTYPE, "");
    start_curses();
    open_hidden_windows();
    WINDOW* server_pane = draw_server_pane();
    WINDOW* message_pane = draw_message_pane();
    draw_status_pane();
    draw_key_line();
    wrefresh(server_pane);
    pollfd messages = {open("messages", O_RDONLY | O_NONBLOCK), POLLIN, 0};
    while (wgetch(server_pane) != key_exit) {
        const timespec pause = {0, round_ns};
        if (ppoll(&messages, 1, &pause, nullptr) > 0)
            show_message(message_pane, messages.fd);
    }
    endwin();
    return 0;
}
