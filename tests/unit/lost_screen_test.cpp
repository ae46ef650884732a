// lost_screen_test.cpp - the sizes that curses' own windows may be given, and a screen for which
// there was no memory: nothing is written to it, and it is tried again.
#include "ui/screen.hpp"

#include "base/signal_door.hpp"
#include "ui/curses_screen.hpp"
#include "ui/keys.hpp"
#include "ui/modal_box.hpp"
#include "ui/pane.hpp"
#include "ui/redraw.hpp"
#include "ui/server_pane.hpp"
#include "ui/window.hpp"
#include "unit/failing_memory.hpp"
#include "unit/net_fixture.hpp"

#include <csignal>
#include <cstdio>
#include <pty.h>
#include <unistd.h>

namespace
{

/// Counts how often the height of a window was changed and not its width.
int changes_of_height_alone = 0;

} // namespace

extern "C" {
int __real_wresize(WINDOW* window, int rows, int columns);
int __wrap_wresize(WINDOW* window, int rows, int columns);
}

int __wrap_wresize(WINDOW* window, int rows, int columns)
{
    if (getmaxx(window) == columns && getmaxy(window) != rows)
        ++changes_of_height_alone;
    return __real_wresize(window, rows, columns);
}

namespace
{

/// While it lives, the test program's standard output is a terminal of this size. Failures that are
/// reported meanwhile are not seen.
class output_terminal
{
public:
    output_terminal(int rows, int columns)
    {
        const winsize size = {.ws_row = static_cast<unsigned short>(rows),
                              .ws_col = static_cast<unsigned short>(columns),
                              .ws_xpixel = 0,
                              .ws_ypixel = 0};
        int ends[2] = {-1, -1};
        is_there = openpty(&ends[0], &ends[1], nullptr, nullptr, &size) == 0;
        master = unique_fd{ends[0]};
        const unique_fd slave{ends[1]};
        std::fflush(stdout);
        dup2(slave.get(), STDOUT_FILENO);
    }
    ~output_terminal()
    {
        std::fflush(stdout);
        dup2(former.get(), STDOUT_FILENO);
        EXPECT_TRUE(is_there);
    }
    output_terminal(const output_terminal&) = delete;
    output_terminal& operator=(const output_terminal&) = delete;

private:
    unique_fd former{dup(STDOUT_FILENO)};
    unique_fd master;
    bool is_there = false;
};

void resize(int rows, int columns)
{
    const output_terminal output{rows, columns};
    on_resize(SIGWINCH);
}

class lost_screen : public net_test
{
protected:
    lost_screen()
    {
        signal_install(SIGWINCH, on_resize);
    }
    ~lost_screen() override
    {
        signal_silence(SIGWINCH);
        std::signal(SIGWINCH, SIG_DFL);
    }
    lost_screen(const lost_screen&) = delete;
    lost_screen& operator=(const lost_screen&) = delete;

    static void resize_without_memory()
    {
        const output_terminal output{24, 160};
        const failing_memory failing{memory_failure::from_then_on, 1};
        on_resize(SIGWINCH);
    }

    /// What the terminal has been made to show, as curses knows it.
    static std::string read_shown()
    {
        std::string cells;
        for (int row = 0; row < LINES; ++row) {
            for (int column = 0; column < COLS; ++column)
                cells += static_cast<char>(mvwinch(curscr, row, column) & A_CHARTEXT);
        }
        return cells;
    }
};

using resized_screen = lost_screen;

TEST_F(lost_screen, is_tried_again_in_the_next_pause)
{
    add_server("one.example");
    resize_without_memory();
    ASSERT_FALSE(may_draw());
    {
        const output_terminal output{24, 160};
        wait_until(may_draw);
    }
    EXPECT_TRUE(may_draw());
    ASSERT_NE(app_state.server_pane, nullptr);
    EXPECT_EQ(screen.row_text(app_state.server_pane, 2).substr(0, 12), " one.example");
}

TEST_F(lost_screen, is_not_written_to)
{
    server_entry& entry = add_server("one.example");
    const std::string before = read_shown();
    mvwaddstr(app_state.message_pane, 3, 3, "put together but not sent");
    wnoutrefresh(app_state.message_pane);
    app_state.is_screen_lost = true;
    status_report(colour::notice, "nobody sees this");
    pane_printf(app_state.message_pane, colour::text, 1, 1, false, true, "%s", "nor this");
    server_marker_write(entry.list_row, marker_connected);
    server_list_draw();
    server_list_select(1);
    window_raise(app_state.status_pane);
    screen_settle();
    EXPECT_EQ(popup_open(10, 3, 5, 5, false, colour::frame, true), nullptr);
    EXPECT_EQ(key_read(app_state.server_pane), ERR);
    EXPECT_TRUE(read_shown() == before);
    app_state.is_screen_lost = false;
    redraw_all();
    EXPECT_NE(read_shown().find("nobody sees this"), std::string::npos);
}

TEST_F(resized_screen, never_changes_a_window_in_its_height_alone)
{
    changes_of_height_alone = 0;
    for (const auto& [rows, columns] : {std::pair{30, 160},
                                        {24, 160},
                                        {60, 160},
                                        {60, 100},
                                        {24, 100},
                                        {7, 100},
                                        {200, 100},
                                        {1, 1},
                                        {24, 160}}) {
        resize(rows, columns);
        EXPECT_EQ(LINES, rows);
        EXPECT_EQ(changes_of_height_alone, 0) << rows << " x " << columns;
    }
}

TEST_F(resized_screen, has_its_box_whole_after_two_resizes_at_once)
{
    constexpr screen_area area = {20, 3, 30, 10};
    modal_box box;
    modal_box_fit(box, area);
    modal_box_show(box);
    resize(1, 1);
    resize(24, 160);
    modal_box_fit(box, area);
    modal_box_write(box, 1, 1, colour::text, false, "waits");
    modal_box_show(box);
    ASSERT_TRUE(box.window);
    EXPECT_EQ(getmaxx(box.window.get()), area.width);
    EXPECT_EQ(getmaxy(box.window.get()), area.height);
    EXPECT_NE(read_shown().find("waits"), std::string::npos);
    modal_box_close(box);
}

TEST_F(resized_screen, has_at_least_two_columns)
{
    for (const int columns : {1, 2, 3}) {
        resize(24, columns);
        EXPECT_EQ(COLS, std::max(columns, 2));
        EXPECT_EQ(getmaxx(curscr), std::max(columns, 2));
    }
    resize(24, 160);
}

} // namespace
