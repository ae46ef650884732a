// window_test.cpp - what reaches the screen, and what must not be drawn.
#include "ui/window.hpp"

#include "app/app_state.hpp"
#include "unit/headless_screen.hpp"

#include <gtest/gtest.h>

namespace
{

TEST(window_show, skips_a_window_outside_a_screen_that_curses_has_shrunk)
{
    const headless_screen screen;
    WINDOW* window = newwin(3, 10, 2, 30);
    ASSERT_NE(window, nullptr);
    const screen_batch no_update_of_a_smaller_screen;
    const int columns = getmaxx(newscr);
    ASSERT_EQ(wresize(newscr, getmaxy(newscr), 20), OK);
    touchwin(window);
    window_show(window);
    EXPECT_TRUE(is_wintouched(window)) << "it was read for a screen that it is not on";
    ASSERT_EQ(wresize(newscr, getmaxy(newscr), columns), OK);
    window_show(window);
    EXPECT_FALSE(is_wintouched(window));
    delwin(window);
}

TEST(screen_batch, shows_windows_when_the_outermost_batch_ends)
{
    const headless_screen screen;
    WINDOW* window = newwin(1, 5, 4, 4);
    ASSERT_NE(window, nullptr);
    mvwaddstr(window, 0, 0, "x");
    {
        const screen_batch outer;
        {
            const screen_batch inner;
            window_show(window);
        }
        EXPECT_FALSE(is_wintouched(window)) << "it is put together with others";
        EXPECT_NE(mvwinch(curscr, 4, 4) & A_CHARTEXT, chtype{'x'}) << "but not sent yet";
    }
    EXPECT_EQ(mvwinch(curscr, 4, 4) & A_CHARTEXT, chtype{'x'});
    delwin(window);
}

} // namespace
