// open_windows_test.cpp - what is open is seen: whatever is drawn under an open window, its cells
// are the window's afterwards.
#include "ui/window.hpp"

#include "net/server_list_fetch.hpp"
#include "ui/glyphs.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "unit/own_directory.hpp"

#include <string>

namespace
{

constexpr int width = 40;
constexpr int height = 20;
constexpr int column = 10; // over a part of the list, of the messages and of the notices
constexpr int row = 3;

class open_window : public net_test,
                    public testing::WithParamInterface<WINDOW * application_state::*>
{
protected:
    open_window()
    {
        app_state.*GetParam() = popup_open(width, height, column, row, false, colour::bar, true);
        for (int inside = 1; inside < height - 1; ++inside)
            glyphs_write_at(app_state.*GetParam(), inside, 1, std::string(width - 2, '#'));
        window_show(app_state.*GetParam());
        EXPECT_EQ(covered_cells(), (width - 2) * (height - 2));
    }
    ~open_window() override
    {
        popup_close();
    }
    open_window(const open_window&) = delete;
    open_window& operator=(const open_window&) = delete;

    /// How many cells of the screen show the window's inside.
    static int covered_cells()
    {
        int count = 0;
        for (int y = row + 1; y < row + height - 1; ++y) {
            for (int x = column + 1; x < column + width - 1; ++x)
                count += (mvwinch(curscr, y, x) & A_CHARTEXT) == '#' ? 1 : 0;
        }
        return count;
    }
    static void expect_seen()
    {
        ASSERT_NE(app_state.*GetParam(), nullptr);
        EXPECT_EQ(covered_cells(), (width - 2) * (height - 2));
    }
};

INSTANTIATE_TEST_SUITE_P(all, open_window,
                         testing::Values(&application_state::popup_win,
                                         &application_state::dialog_win),
                         [](const auto& which) {
                             return which.param == &application_state::popup_win ? "popup"
                                                                                 : "dialog";
                         });

TEST_P(open_window, is_seen_after_a_notice)
{
    for (int count = 0; count < 5; ++count)
        status_report(colour::notice, "%s", std::string(100, 'n').c_str());
    expect_seen();
}

TEST_P(open_window, is_seen_after_a_line_in_the_message_pane)
{
    for (int count = 0; count < 20; ++count)
        pane_printf(app_state.message_pane, colour::text, 1, 5, false, true, "%s",
                    std::string(100, 'm').c_str());
    expect_seen();
}

TEST_P(open_window, is_seen_after_a_fetched_list)
{
    const own_directory directory;
    start_server_list_fetch();
    std::optional<server_end> list = own_directory::accept();
    ASSERT_TRUE(list && own_directory::takes_request(*list));
    std::string lines = "HTTP/1.0 200 OK\r\n\r\n";
    for (int number = 10; number < 40; ++number)
        lines += std::to_string(number) + ".a-name-as-long-as-a-row.example\t1\t\t\t\t\t\t\t\n";
    list->send_bytes(lines);
    list->close();
    ASSERT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    EXPECT_EQ(app_state.servers->count, 30);
    expect_seen();
}

} // namespace
