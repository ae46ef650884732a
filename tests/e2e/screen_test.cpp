// screen_test.cpp - where things are on the screen, in which colours, and what a resize does.
#include "e2e/client_session.hpp"
#include "e2e/whole_screen.hpp"

#include <gtest/gtest.h>
#include <sys/ioctl.h>

namespace
{

constexpr std::string_view title = "NCurses tovrikclient V0.02.001 - Written by the team";
constexpr std::string_view keys =
    "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, ^L Connect, ^R ServerList, ^X Exit";
constexpr int shared_column = 26;

std::string fit_to_width(std::string_view text, int width)
{
    std::string line{text.substr(0, static_cast<std::size_t>(width))};
    line.append(static_cast<std::size_t>(width) - line.size(), ' ');
    return line;
}

/// Checks every cell of a run: its text, and the look of `pair`.
void expect_run(client_session& client, int row, int first, int last, const char* text, int pair)
{
    for (int column = first; column <= last; ++column)
        ASSERT_EQ(client.terminal().cell(row, column), pair_cell(pair, false, text))
            << "row " << row << " column " << column << '\n'
            << client.terminal().description();
}

void expect_frames(client_session& client, int rows, int columns)
{
    const int status_top = rows - 7;
    const int bottom = rows - 2;
    const int right = columns - 1;
    const auto expect_cell = [&](int row, int column, const char* text) {
        expect_run(client, row, column, column, text, pairs::frame);
    };
    expect_cell(0, 0, "┌");
    expect_cell(0, shared_column, "┐");
    expect_cell(bottom, 0, "└");
    expect_cell(status_top, shared_column, "├");
    expect_cell(bottom, shared_column, "┴");
    expect_cell(status_top, right, "┤");
    expect_cell(bottom, right, "┘");
    expect_run(client, 0, 1, shared_column - 1, "─", pairs::frame);
    expect_run(client, bottom, 1, shared_column - 1, "─", pairs::frame);
    expect_run(client, bottom, shared_column + 1, right - 1, "─", pairs::frame);
    expect_run(client, status_top, shared_column + 1, right - 1, "─", pairs::frame);
    for (int row = 1; row < bottom; ++row) {
        expect_cell(row, 0, "│");
        if (row != status_top)
            expect_cell(row, shared_column, "│");
    }
    for (int row = status_top + 1; row < bottom - 1; ++row)
        expect_cell(row, right, "│");
    // Blanking the newest line removes the frame too.
    EXPECT_EQ(client.terminal().cell(bottom - 1, right).text, " ");
}

void expect_key_line(client_session& client, int rows, int columns)
{
    EXPECT_EQ(client.terminal().row(rows - 1), fit_to_width(keys, columns));
    for (int column = 0; column < columns; ++column) {
        const screen_cell seen = client.terminal().cell(rows - 1, column);
        ASSERT_EQ(seen, pair_cell(pairs::bar, false, seen.text)) << column;
    }
}

void expect_heading(client_session& client)
{
    EXPECT_EQ(client.terminal().screen().text(1, 1, 25), "  » available Servers «  ");
    for (int column = 1; column <= 25; ++column) {
        const screen_cell seen = client.terminal().cell(1, column);
        ASSERT_EQ(seen, pair_cell(pairs::bar, false, seen.text)) << column;
    }
}

class screen_sizes : public testing::TestWithParam<std::pair<int, int>>
{
};

TEST_P(screen_sizes, show_everything_in_its_place)
{
    const auto& [rows, columns] = GetParam();
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha"}), {.rows = rows, .columns = columns}));
    expect_frames(client, rows, columns);
    expect_key_line(client, rows, columns);
    expect_heading(client);
    EXPECT_TRUE(client.wait_for_status(title, pairs::notice));
    for (const std::string& line : client.message_lines())
        EXPECT_EQ(line, "");
    EXPECT_EQ(client.terminal().cell(1, 28).background, 0) << "the message pane is black inside";
}

INSTANTIATE_TEST_SUITE_P(screen, screen_sizes,
                         testing::Values(std::pair{24, 80}, std::pair{30, 100}, std::pair{60, 200},
                                         std::pair{10, 80}));

TEST(screen, everything_finds_its_place_after_a_resize)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    for (const auto& size : {std::pair{30, 100}, {24, 80}, {60, 200}, {25, 81}}) {
        const int rows = size.first;
        const int columns = size.second;
        client.terminal().resize(rows, columns);
        ASSERT_TRUE(client.terminal().wait_until(
            [&] {
                return client.terminal().row(rows - 1) == fit_to_width(keys, columns) &&
                       client.bar_row() == 1;
            },
            "the screen is built anew"));
        ASSERT_TRUE(client.wait_for_keys());
        expect_frames(client, rows, columns);
        expect_key_line(client, rows, columns);
        expect_heading(client);
        EXPECT_EQ(client.server_row(1), " alpha                   ");
        EXPECT_EQ(client.server_row(2), " beta                    ");
        EXPECT_EQ(client.status_lines(), (std::vector<std::string>{"", "", "", std::string{title}}))
            << "the panes begin empty again";
        EXPECT_TRUE(client.wait_for_status(title, pairs::notice));
    }
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(screen, a_resize_brings_the_bar_back_to_the_first_server)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta", "gamma"})));
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "gamma"; }, "bar"));
    client.terminal().resize(26, 90);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "alpha"; }, "bar"));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
    const screen_cell left = client.terminal().cell(4, 2);
    EXPECT_EQ(left, pair_cell(pairs::plain, true, "g"));
}

TEST(screen, a_terminal_that_does_not_tell_its_size_keeps_the_one_it_had)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"}), {.rows = 30, .columns = 100}));
    const unique_fd terminal = client.open_terminal();
    for (const winsize& size : {winsize{0, 0, 0, 0}, {0, 100, 0, 0}, {30, 0, 0, 0}}) {
        client.terminal().send_key(named_key::down);
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "below"));
        ASSERT_EQ(ioctl(terminal.get(), TIOCSWINSZ, &size), 0);
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 1; }, "above"));
        EXPECT_TRUE(wait_for_whole_screen(client.terminal())) << size.ws_row << " " << size.ws_col;
    }
}

TEST(screen, a_resize_of_an_empty_list_draws_the_bar_but_selects_nothing)
{
    client_session client;
    ASSERT_TRUE(client.start({}));
    EXPECT_EQ(client.bar_row(), 0);
    client.terminal().resize(26, 90);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 1; }, "the bar"));
    client.terminal().send_control('d');
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.status_lines()[3], title);
}

TEST(screen, survives_any_number_of_resizes_to_any_size)
{
    constexpr int rounds = 40; // an even number: the panes are in front at the end
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    for (int round = 0; round < rounds; ++round) {
        client.terminal().resize(1 + round * 7 % 50, 1 + round * 37 % 150);
        client.terminal().send_key(named_key::down);
        client.terminal().send_control('h');
    }
    // A refused key beeps even where nothing can be shown. It is pressed again and again, since the
    // terminal swallows ^D while a resize has left curses.
    for (const auto& [tiny_rows, tiny_columns] : {std::pair{1, 1}, {2, 2}, {6, 28}, {3, 200}}) {
        client.terminal().resize(tiny_rows, tiny_columns);
        const int bells = client.terminal().bells();
        const auto heard = [&] {
            client.terminal().send_control('d');
            return client.terminal().bells() > bells;
        };
        ASSERT_TRUE(client.terminal().wait_until(heard, "the client takes keys"));
    }
    client.terminal().resize(24, 80);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "alpha"; },
                                             "the screen is whole again"));
    ASSERT_TRUE(client.wait_for_keys());
    expect_frames(client, 24, 80);
    expect_key_line(client, 24, 80);
}

TEST(screen, a_resize_without_a_change_of_size_is_handled_too)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "beta"; }, "bar"));
    client.terminal().send_signal(SIGWINCH);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "alpha"; }, "bar"));
    EXPECT_TRUE(client.wait_for_status(title, pairs::notice));
}

TEST(screen, help_covers_everything_and_uncovers_it_intact)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
    const auto everything = [&] {
        std::vector<screen_cell> cells;
        for (int row = 0; row < 24; ++row)
            for (int column = 0; column < 80; ++column)
                cells.push_back(client.terminal().cell(row, column));
        return cells;
    };
    const std::vector<screen_cell> before = everything();
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    EXPECT_EQ(client.terminal().row(0), fit_to_width("  [ ncurses tovrik client - Help ]", 80));
    EXPECT_EQ(client.terminal().cell(0, 2), pair_cell(pairs::frame, true, "["));
    EXPECT_EQ(client.terminal().screen().text(23, 58), "[ To exit press ^H ]  ");
    EXPECT_EQ(client.terminal().cell(23, 58), pair_cell(pairs::plain, true, "["));
    EXPECT_FALSE(client.terminal().shows("alpha"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return everything() == before; },
                                             "the panes are back as they were"));
}

TEST(screen, help_stays_in_front_through_a_resize)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha"})));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.terminal().row(0) ==
                       fit_to_width("  [ ncurses tovrik client - Help ]", 100) &&
                   client.terminal().screen().text(29, 78) == "[ To exit press ^H ]  " &&
                   !client.terminal().shows("alpha");
        },
        "the help in front at its new size"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().row(29) == fit_to_width(keys, 100); }, "the panes"));
    EXPECT_EQ(client.bar_text(), "alpha");
    expect_frames(client, 30, 100);
}

TEST(screen, an_eight_bit_terminal_gets_the_guillemets_as_single_bytes)
{
    client_session client;
    client_start how;
    how.environment["LC_ALL"] = "C";
    how.utf8 = false;
    ASSERT_TRUE(client.start(with_aliases({"alpha"}), how));
    EXPECT_NE(client.terminal().raw_output().find("\xBB available Servers \xAB"),
              std::string::npos);
}

} // namespace
