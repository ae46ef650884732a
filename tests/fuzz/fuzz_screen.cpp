// fuzz_screen.cpp - see fuzz_screen.hpp.
#include "fuzz/fuzz_screen.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "bench/null_screen.hpp"
#include "fuzz/property.hpp"
#include "net/log_files.hpp"
#include "ui/screen.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

constexpr int usual_lines = 24;
constexpr int usual_columns = 80;
constexpr long idle_us = 3'000'000;

struct keyboard {
    unique_fd reader;
    unique_fd writer;

    keyboard()
    {
        int ends[2] = {-1, -1};
        require(pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0, "there are descriptors for a keyboard");
        reader = unique_fd{ends[0]};
        writer = unique_fd{ends[1]};
    }
    std::string name() const
    {
        return "/proc/self/fd/" + std::to_string(reader.get());
    }
};

/// What is made once for all inputs.
struct fuzz_terminal {
    keyboard keys;
    null_screen screen{keys.name().c_str()};

    fuzz_terminal()
    {
        // Keys come whole, so there is nothing to wait for after an Escape.
        set_escdelay(0);
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        pause_init();
        // The fuzzer needs its own signals.
        pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    }
};

fuzz_terminal& get_terminal()
{
    static fuzz_terminal made;
    return made;
}

void forget_keys()
{
    char bytes[4096];
    while (read(get_terminal().keys.reader.get(), bytes, sizeof bytes) > 0) {
    }
    flushinp();
}

void forget_connections()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* entry = server_at(app_state.servers, index);
        close_log_file(*entry);
        std::free(entry->report_buffer);
        std::free(entry->rx_packet);
        if (entry->socket_fd > 0)
            close(entry->socket_fd);
    }
}

void forget_windows()
{
    for (WINDOW** window : {&app_state.popup_win, &app_state.dialog_win}) {
        if (*window != nullptr)
            delwin(*window);
        *window = nullptr;
    }
    app_state.settings_shown = 0;
    app_state.help_shown = 0;
}

void forget_list()
{
    app_state.selected = -1;
    app_state.list_scroll = 0;
    std::free(std::exchange(app_state.list_markers, nullptr));
    app_state.list_markers_count = 0;
}

bool is_harmless(const cchar_t& cell)
{
    const wchar_t glyph = cell.chars[0];
    return (glyph >= 0x20 && glyph < 0x7F) || (glyph >= 0xA0 && glyph <= 0xFF);
}

bool is_vertical_line(const cchar_t& cell)
{
    return cell.chars[0] == L'x' && (cell.attr & A_ALTCHARSET) != 0;
}

} // namespace

screen_visit::screen_visit()
{
    get_terminal();
    if (LINES != usual_lines || COLS != usual_columns)
        on_resize(SIGWINCH);
    // As if a fetch were running, so that none is started.
    app_state.fetch.running = 1;
    world.on_pause = idle_pause;
}

screen_visit::~screen_visit()
{
    forget_connections();
    close_shared_log();
    forget_windows();
    configuration_forget();
    forget_list();
    forget_keys();
}

void keys_type(std::string_view bytes)
{
    const ssize_t typed = write(get_terminal().keys.writer.get(), bytes.data(), bytes.size());
    require(typed == static_cast<ssize_t>(bytes.size()), "the keyboard takes what is typed");
}

bool keys_wait()
{
    pollfd watched = {get_terminal().keys.reader.get(), POLLIN, 0};
    return poll(&watched, 1, 0) > 0;
}

void idle_pause()
{
    if (!keys_wait())
        clock_advance(idle_us);
}

void screen_resize(int lines, int columns)
{
    world.lines = lines;
    world.columns = columns;
    on_resize(SIGWINCH);
}

void screen_check()
{
    int row = 0;
    int column = 0;
    getyx(curscr, row, column);
    std::vector<cchar_t> cells(static_cast<std::size_t>(COLS) + 1);
    for (int line = 0; line < LINES; ++line) {
        if (mvwin_wchnstr(curscr, line, 0, cells.data(), COLS) == ERR)
            continue;
        require(std::all_of(cells.begin(), cells.end() - 1, is_harmless),
                "only characters that cannot drive a terminal are shown");
    }
    wmove(curscr, row, column);
}

std::string screen_row(int row)
{
    std::string text;
    for (int column = 0; column < COLS; ++column) {
        cchar_t cell = {};
        mvwin_wch(curscr, row, column, &cell);
        text += is_vertical_line(cell) ? '|' : static_cast<char>(cell.chars[0]);
    }
    return text;
}
