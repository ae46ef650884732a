// server_list_select_test.cpp - a move of the bar over the list is visible at once.
#include "ui/server_pane.hpp"
#include "unit/net_fixture.hpp"

namespace
{

constexpr int first_row = 2;
constexpr int second_row = 3;
constexpr int name_column = 2;
constexpr int name_pair = 2;
constexpr int bar_pair = 8;

class server_list_selection : public net_test
{
protected:
    server_list_selection()
    {
        add_server("b.example");
        add_server("a.example");
    }

    /// The pair of a name's first character on the terminal.
    int shown_pair(int row) const
    {
        return screen.pair_at(curscr, row, name_column);
    }
};

TEST_F(server_list_selection, is_shown_without_waiting_for_the_next_key)
{
    server_list_select(2);
    EXPECT_EQ(shown_pair(first_row), name_pair);
    EXPECT_EQ(shown_pair(second_row), bar_pair);
    EXPECT_FALSE(is_wintouched(app_state.server_pane));
}

TEST_F(server_list_selection, stays_behind_the_settings)
{
    app_state.settings_shown = 1;
    server_list_select(2);
    EXPECT_NE(shown_pair(second_row), bar_pair);
    app_state.settings_shown = 0;
}

} // namespace
