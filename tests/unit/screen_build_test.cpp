// screen_build_test.cpp - the colours and windows that everything else is built on.
#include "unit/net_fixture.hpp"

namespace
{

struct window_look {
    const char* name;
    WINDOW* application_state::*field;
    int width;
    int height;
    int column;
    int row;
    bool scrolls;
    short pair;
};

class screen_building : public net_test
{
protected:
    static void expect_looks()
    {
        const window_look looks[] = {
            {"help", &application_state::help_win, COLS, LINES, 0, 0, true, 1},
            {"settings", &application_state::settings_win, COLS, LINES, 0, 0, true, 1},
            {"servers", &application_state::server_pane, 27, LINES - 1, 0, 0, false, 1},
            {"messages", &application_state::message_pane, COLS - 28, LINES - 6, 27, 0, true, 1},
            {"status", &application_state::status_pane, COLS - 26, 6, 26, LINES - 7, true, 1},
            {"keys", &application_state::key_line, COLS, 1, 0, LINES - 1, false, 8},
        };
        for (const window_look& look : looks)
            expect_look(app_state.*look.field, look);
    }

    static void expect_look(WINDOW* window, const window_look& look)
    {
        SCOPED_TRACE(look.name);
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(getmaxx(window), look.width);
        EXPECT_EQ(getmaxy(window), look.height);
        EXPECT_EQ(getbegx(window), look.column);
        EXPECT_EQ(getbegy(window), look.row);
        EXPECT_EQ(is_scrollok(window), look.scrolls);
        EXPECT_TRUE(is_nodelay(window)) << "nothing may wait for a key";
        // A blank inside, on a row where nothing is written.
        const int row = look.height > 1 ? look.height - 3 : 0;
        const chtype inside = mvwinch(window, row, look.width - 2);
        EXPECT_EQ(inside & A_CHARTEXT, chtype{' '});
        EXPECT_EQ(PAIR_NUMBER(static_cast<int>(inside)), look.pair);
        EXPECT_EQ(inside & A_BOLD, 0U);
    }
};

TEST_F(screen_building, gives_every_pair_its_colours_whether_used_or_not)
{
    const struct {
        short pair;
        short foreground;
        short background;
    } rows[] = {
        {1, COLOR_BLUE, COLOR_BLACK},     {2, COLOR_WHITE, COLOR_BLACK},
        {3, COLOR_BLUE, COLOR_WHITE},     {4, COLOR_WHITE, COLOR_CYAN},
        {5, COLOR_RED, COLOR_BLACK},      {6, COLOR_YELLOW, COLOR_BLACK},
        {7, COLOR_GREEN, COLOR_BLACK},    {8, COLOR_BLACK, COLOR_WHITE},
        {9, COLOR_WHITE, COLOR_BLACK},    {10, COLOR_WHITE, COLOR_BLUE},
        {11, COLOR_CYAN, COLOR_BLACK},    {12, COLOR_RED, COLOR_BLUE},
        {13, COLOR_BLUE, COLOR_BLACK},    {14, COLOR_WHITE, COLOR_BLACK},
        {15, COLOR_MAGENTA, COLOR_BLACK},
    };
    for (const auto& row : rows) {
        short foreground = -1;
        short background = -1;
        ASSERT_EQ(pair_content(row.pair, &foreground, &background), OK) << row.pair;
        EXPECT_EQ(foreground, row.foreground) << row.pair;
        EXPECT_EQ(background, row.background) << row.pair;
    }
}

TEST_F(screen_building, makes_every_window_for_the_terminals_size)
{
    expect_looks();
}

TEST_F(screen_building, scrolls_messages_above_the_status_pane_only)
{
    int top = -1;
    int bottom = -1;
    ASSERT_EQ(wgetscrreg(app_state.message_pane, &top, &bottom), OK);
    EXPECT_EQ(top, 1);
    EXPECT_EQ(bottom, LINES - 9);
}

TEST_F(screen_building, turns_keys_into_codes_where_they_are_read)
{
    EXPECT_TRUE(is_keypad(app_state.server_pane));
}

} // namespace
