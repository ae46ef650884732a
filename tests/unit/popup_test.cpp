// popup_test.cpp - where windows can be opened.
#include "ui/window.hpp"

#include "unit/headless_screen.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr int width = 10;
constexpr int height = 4;

WINDOW* open_at(int column, int row)
{
    return popup_open(width, height, column, row, true, colour::frame, true);
}

TEST(popup, is_not_opened_entirely_off_the_screen)
{
    const headless_screen screen;
    EXPECT_EQ(open_at(COLS, 0), nullptr);
    EXPECT_EQ(open_at(0, LINES), nullptr);
    EXPECT_EQ(open_at(COLS + 30, LINES + 30), nullptr);
}

TEST(popup, may_reach_beyond_the_screens_edges)
{
    const headless_screen screen;
    for (const auto& [column, row] :
         {std::pair{COLS - 1, 0}, {0, LINES - 1}, {COLS - 1, LINES - 1}}) {
        WINDOW* window = open_at(column, row);
        ASSERT_NE(window, nullptr) << column << ", " << row;
        EXPECT_EQ(getbegx(window), column);
        EXPECT_EQ(getbegy(window), row);
        window_erase(window);
    }
}

TEST(popup, paints_its_interior_but_not_its_edge)
{
    constexpr int pair = 10;
    const headless_screen screen;
    WINDOW* window = popup_open(width, height, 0, 0, false, static_cast<colour>(pair), false);
    ASSERT_NE(window, nullptr);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const bool is_edge =
                row == 0 || row == height - 1 || column == 0 || column == width - 1;
            EXPECT_EQ(screen.pair_at(window, row, column), is_edge ? 0 : pair)
                << row << ", " << column;
        }
    }
    window_erase(window);
}

TEST(line_blank, moves_only_the_cursor_for_no_cells)
{
    const headless_screen screen;
    WINDOW* window = newwin(height, width, 0, 0);
    ASSERT_NE(window, nullptr);
    wnoutrefresh(window);
    line_blank(window, 2, 0, 0);
    EXPECT_FALSE(is_wintouched(window));
    EXPECT_EQ(getcury(window), 2);
    EXPECT_EQ(getcurx(window), 0);
    delwin(window);
}

} // namespace
