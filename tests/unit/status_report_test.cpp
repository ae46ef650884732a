// status_report_test.cpp - one report is one line of the status pane, whatever a server sends.
#include "unit/net_fixture.hpp"

#include "ui/layout.hpp"
#include "ui/pane.hpp"

#include <utility>

namespace
{

/// The characters of the pane's top and bottom rows and of its left side.
std::wstring read_frame(WINDOW* pane)
{
    std::wstring frame;
    const auto take = [&](int row, int column) {
        cchar_t cell;
        wchar_t text[CCHARW_MAX + 1] = {};
        attr_t attributes = 0;
        short pair = 0;
        mvwin_wch(pane, row, column, &cell);
        getcchar(&cell, text, &attributes, &pair, nullptr);
        frame += text;
    };
    for (int column = 0; column < getmaxx(pane); ++column) {
        take(0, column);
        take(getmaxy(pane) - 1, column);
    }
    for (int row = 0; row < getmaxy(pane); ++row)
        take(row, 0);
    return frame;
}

class status_reporting : public net_test
{
protected:
    status_reporting() : frame(read_frame(app_state.status_pane)) {}

    void expect_frame() const
    {
        EXPECT_TRUE(read_frame(app_state.status_pane) == frame);
    }

    std::wstring frame;
};

TEST_F(status_reporting, shows_blanks_for_line_feeds)
{
    for (const auto& [text, line] : {std::pair{"one\ntwo", "one two"},
                                     {"one\n\ntwo\n", "one  two"},
                                     {"\none", " one"},
                                     {"one\n%*two", "one %*two"}}) {
        mark();
        status_report(colour::text, "%s", text);
        EXPECT_EQ(screen.status_text(), line);
        EXPECT_EQ(screen.status_text(1), "--mark--") << text;
        expect_frame();
    }
    mark();
    for (const std::string mark_of_verbatim : {"%*", "%]"}) {
        mark();
        const std::string verbatim = "verbatim %d " + mark_of_verbatim + "\nto the end";
        status_report(colour::text, verbatim.c_str(), 7);
        EXPECT_EQ(said(), (status_lines{{"verbatim %d " + mark_of_verbatim + " to the end", 2}}));
        expect_frame();
    }
}

TEST_F(status_reporting, says_nothing_without_a_format_or_a_pane)
{
    mark();
    pane_printf(app_state.status_pane, colour::text, 1, status_row, false, false, nullptr);
    EXPECT_EQ(said(), status_lines{});
    WINDOW* pane = std::exchange(app_state.status_pane, nullptr);
    status_report(colour::text, "nowhere");
    pane_printf(nullptr, colour::text, 1, status_row, false, false, "nowhere");
    app_state.status_pane = pane;
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(status_reporting, is_bold_for_errors_notices_and_successes_only)
{
    for (int pair = 1; pair <= 15; ++pair) {
        status_report(static_cast<colour>(pair), "pair %d", pair);
        EXPECT_EQ(screen.pair_at(app_state.status_pane, status_row, status_column), pair);
        EXPECT_EQ(screen.is_bold_at(app_state.status_pane, status_row, status_column),
                  pair == 5 || pair == 6 || pair == 7)
            << pair;
    }
}

TEST_F(status_reporting, keeps_the_frame_whole_around_a_servers_lines)
{
    const server_entry& entry = add_server("host.example", "srv");
    server_end server = connect(*server_at(app_state.servers, 0));
    ASSERT_EQ(&entry, server_at(app_state.servers, 0));
    for (const auto& [kind, pair] : {std::pair{103U, 2}, {108U, 5}}) {
        mark();
        server.send({kind, "line one\nline two\n\nline four"});
        poll_all();
        EXPECT_EQ(said(), (status_lines{{"line one line two  line four", pair}}));
        expect_frame();
    }
    server.send({103, std::string(20, '\n') + "below"});
    poll_all();
    EXPECT_EQ(screen.status_text(), std::string(20, ' ') + "below");
    expect_frame();
}

} // namespace
