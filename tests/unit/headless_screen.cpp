// headless_screen.cpp - see headless_screen.hpp.
#include "unit/headless_screen.hpp"

#include "data/settings_page.hpp"
#include "ui/layout.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <unistd.h>

namespace
{

constexpr short last_pair = 15;

/// Frees all texts of the entries, including those that outlive their entry in the program.
void release_servers()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const server_entry* server = server_at(app_state.servers, index);
        std::free(server->UseEMail);
        std::free(server->SubCode);
        std::free(server->rx_packet);
    }
    collection_destroy(app_state.servers);
}

void release_folders()
{
    for (std::size_t index = 0; index < setting_text_count; ++index)
        std::free(app_state.setting_texts[index]);
    std::free(static_cast<void*>(app_state.setting_texts));
}

} // namespace

headless_screen::headless_screen() : input(std::fopen("/dev/null", "r")), output(std::tmpfile())
{
    setenv("LINES", "24", 1);
    setenv("COLUMNS", "80", 1);
    if (input && output)
        terminal = newterm("linux", output.get(), input.get());
    if (terminal == nullptr) {
        std::perror("cannot make a screen without a terminal");
        std::abort();
    }
    start_color();
    for (short pair = 1; pair <= last_pair; ++pair)
        init_pair(pair, COLOR_WHITE, COLOR_BLACK);
    std::destroy_at(&app_state);
    std::construct_at(&app_state);
    app_state.screen = stdscr;
    app_state.settings_win = newwin(LINES, COLS, 0, 0);
    app_state.status_pane = newwin(6, COLS - 26, LINES - 7, 26);
    app_state.servers = server_collection_new();
    app_state.setting_texts = static_cast<char**>(std::calloc(setting_text_count, sizeof(char*)));
    settings_dialog();
}

headless_screen::~headless_screen()
{
    release_servers();
    release_folders();
    delwin(app_state.settings_win);
    delwin(app_state.status_pane);
    std::destroy_at(&app_state);
    std::construct_at(&app_state);
    endwin();
    delscreen(terminal);
}

std::string headless_screen::row_text(WINDOW* window, int row) const
{
    std::string text;
    for (int column = 1; column < getmaxx(window) - 1; ++column)
        text += static_cast<char>(mvwinch(window, row, column) & A_CHARTEXT);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string headless_screen::status_text(int back) const
{
    return row_text(app_state.status_pane, status_row - back);
}

int headless_screen::pair_at(WINDOW* window, int row, int column) const
{
    return PAIR_NUMBER(static_cast<int>(mvwinch(window, row, column)));
}

bool headless_screen::is_bold_at(WINDOW* window, int row, int column) const
{
    return (mvwinch(window, row, column) & A_BOLD) != 0;
}

std::size_t headless_screen::bells() const
{
    std::string written(static_cast<std::size_t>(lseek(fileno(output.get()), 0, SEEK_END)), ' ');
    const ssize_t length = pread(fileno(output.get()), written.data(), written.size(), 0);
    return static_cast<std::size_t>(std::count(
        written.begin(), std::next(written.begin(), std::max<ssize_t>(length, 0)), '\a'));
}
