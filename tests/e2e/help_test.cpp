// help_test.cpp - the help window: what it shows of the user's help text, and when it reads it.
#include "e2e/client_session.hpp"

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr const char* file = "ncursesclient.hlp";
constexpr const char* title = "  [ ncurses tovrik client - Help ]";
constexpr const char* hint = "[ To exit press ^H ]";
constexpr int last_row = 23;

class help : public testing::Test
{
protected:
    [[nodiscard]] testing::AssertionResult open_help()
    {
        client.terminal().send_control('h');
        return client.terminal().wait_until([&] { return row(last_row).empty() || is_hinted(); },
                                            "the help");
    }
    bool is_hinted()
    {
        return row(client.terminal().screen().rows() - 1).ends_with(hint);
    }
    /// A row without its trailing blanks.
    std::string row(int number)
    {
        std::string text = client.terminal().row(number);
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }
    void expect_title_and_hint_alone()
    {
        EXPECT_EQ(row(0), title);
        for (int number = 1; number < last_row; ++number)
            EXPECT_EQ(row(number), "") << number;
        EXPECT_EQ(row(last_row), std::string(58, ' ') + hint);
    }
    std::string working_folder()
    {
        const std::string link = "/proc/" + std::to_string(client.terminal().process_id()) + "/cwd";
        return std::filesystem::read_symlink(link);
    }

    client_session client;
};

std::string make_numbered_lines(int count)
{
    std::string lines;
    for (int number = 1; number <= count; ++number)
        lines += "line " + std::to_string(number) + "\n";
    return lines;
}

TEST_F(help, one_line_stands_on_row_2_from_column_0)
{
    client.home().write_file(file, "Only one line.\n");
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(0), title);
    EXPECT_EQ(row(1), "");
    EXPECT_EQ(row(2), "Only one line.");
    for (int number = 3; number < last_row; ++number)
        EXPECT_EQ(row(number), "") << number;
    EXPECT_EQ(row(last_row), std::string(58, ' ') + hint);
    terminal_session& terminal = client.terminal();
    EXPECT_EQ(terminal.cell(0, 2), pair_cell(pairs::frame, true, "["));
    EXPECT_EQ(terminal.cell(2, 0), pair_cell(pairs::plain, false, "O"));
    EXPECT_EQ(terminal.cell(last_row, 58), pair_cell(pairs::plain, true, "["));
    EXPECT_EQ(terminal.cell(last_row, 77), pair_cell(pairs::plain, true, "]"));
}

TEST_F(help, the_hint_ends_two_columns_from_the_edge_on_every_size)
{
    ASSERT_TRUE(client.start({}, {.rows = 40, .columns = 132}));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return is_hinted(); }, "the help"));
    EXPECT_EQ(row(39), std::string(110, ' ') + hint);
}

TEST_F(help, a_text_of_21_lines_just_fits)
{
    client.home().write_file(file, make_numbered_lines(21));
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(0), title);
    for (int number = 1; number <= 21; ++number)
        EXPECT_EQ(row(number + 1), "line " + std::to_string(number));
    EXPECT_EQ(row(last_row), std::string(58, ' ') + hint);
}

TEST_F(help, a_longer_text_shows_its_end)
{
    client.home().write_file(file, make_numbered_lines(40));
    ASSERT_TRUE(client.start({}));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return row(22) == "line 40"; }, "its end"));
    for (int number = 18; number <= 40; ++number) {
        // The blank before the text is removed at its place, whatever has moved there.
        const std::string text = "line " + std::to_string(number);
        EXPECT_EQ(row(number - 18), number == 20 ? text.substr(1) : text);
    }
    EXPECT_EQ(row(last_row), "");
    EXPECT_FALSE(client.terminal().shows(hint));
    EXPECT_FALSE(client.terminal().shows("tovrik client"));
}

TEST_F(help, a_last_line_without_an_end_is_shown)
{
    client.home().write_file(file, "first\n\nlast");
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "first");
    EXPECT_EQ(row(3), "");
    EXPECT_EQ(row(4), "last");
}

TEST_F(help, is_read_when_the_screen_is_built_and_again_after_a_resize)
{
    client.home().write_file(file, "the old text\n");
    ASSERT_TRUE(client.start({}));
    client.home().write_file(file, "the new text\n");
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "the old text");
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return row(2) == "the new text" && is_hinted(); }, "the new text"));
    EXPECT_EQ(row(29), std::string(78, ' ') + hint);
    unlink(client.home().path_of(file).c_str());
    client.terminal().resize(24, 80);
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return row(2).empty() && is_hinted(); }, "no text"));
}

TEST_F(help, opens_and_closes_without_a_trace)
{
    client.home().write_file(file, make_numbered_lines(30));
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    ASSERT_TRUE(client.wait_for_keys());
    const std::string before = client.terminal().screen().whole_text();
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return row(22) == "line 30"; }, "its end"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == before; }, "the panes alone"));
    client.terminal().send_key(named_key::tab);
    EXPECT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"))
        << "the window was closed and not only covered";
}

TEST_F(help, opening_and_closing_overwrites_what_others_wrote_to_the_terminal)
{
    client.home().write_file(file, make_numbered_lines(5));
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    ASSERT_TRUE(client.wait_for_keys());
    const std::string panes = client.terminal().screen().whole_text();
    const unique_fd terminal = client.open_terminal();
    const auto scribble = [&] {
        // At a place where both the help and the panes are blank; the cursor goes back.
        constexpr std::string_view words = "\0337\033[10;41HSTRANGER\0338";
        EXPECT_EQ(write(terminal.get(), words.data(), words.size()),
                  static_cast<ssize_t>(words.size()));
        return client.terminal().wait_for_text("STRANGER");
    };
    ASSERT_TRUE(scribble());
    ASSERT_TRUE(open_help());
    EXPECT_TRUE(client.terminal().wait_for_no_text("STRANGER"));
    ASSERT_TRUE(scribble());
    client.terminal().send_control('h');
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == panes; }, "the panes alone"));
}

TEST_F(help, does_not_change_the_working_folder)
{
    client.home().make_folder("house");
    client.home().write_file("house/ncursesclient.hlp", "from the house\n");
    client.home().write_file(file, "from the working folder\n");
    ASSERT_TRUE(client.start_as_it_is({.home_variable = client.home().path_of("house")}));
    EXPECT_EQ(working_folder(), client.home().path());
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "from the house");
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.terminal().wait_until([&] { return is_hinted(); }, "the help"));
    EXPECT_EQ(working_folder(), client.home().path());
}

TEST_F(help, uses_the_working_folder_without_home)
{
    client.home().write_file(file, "from the working folder\n");
    client_start how;
    how.unset.insert("HOME");
    ASSERT_TRUE(client.start_as_it_is(how));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "from the working folder");
    EXPECT_EQ(working_folder(), client.home().path());
}

TEST_F(help, a_home_that_cannot_be_entered_has_no_help)
{
    client.home().write_file(file, "from the working folder\n");
    ASSERT_TRUE(client.start_as_it_is({.home_variable = "./absent"}));
    ASSERT_TRUE(open_help());
    expect_title_and_hint_alone();
}

TEST_F(help, is_empty_without_a_file)
{
    ASSERT_TRUE(client.start({}));
    const std::vector<std::string> notices = client.status_lines();
    ASSERT_TRUE(open_help());
    expect_title_and_hint_alone();
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("^D Disconnect"));
    EXPECT_EQ(client.status_lines(), notices);
}

TEST_F(help, is_empty_if_the_file_cannot_be_read)
{
    const std::string path = client.home().path_of(file);
    const std::function<int()> makers[] = {
        [&] { return mkdir(path.c_str(), 0700); }, [&] { return mkfifo(path.c_str(), 0600); },
        [&] { return symlink(file, path.c_str()); },             // a loop
        [&] { return symlink("/proc/self/mem", path.c_str()); }, // opens, but cannot be read
    };
    for (const auto& make : makers) {
        std::filesystem::remove(path);
        ASSERT_EQ(make(), 0);
        client_session other;
        ASSERT_TRUE(other.start_as_it_is({.home_variable = client.home().path()}));
        other.terminal().send_control('h');
        ASSERT_TRUE(other.terminal().wait_for_text(hint));
        EXPECT_EQ(other.terminal().row(2), std::string(80, ' '));
    }
}

TEST_F(help, bytes_of_the_text_do_not_control_the_terminal)
{
    client.home().write_file(file, "a\033[7mb\ac\x9B"
                                   "2Jd\te\rf\b\x7F\xFC\n"
                                   "behind\n");
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "a?[7mb?c?2Jd    e f??ü");
    EXPECT_EQ(row(3), "behind");
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_FALSE(client.terminal().cell(2, 10).reverse);
    EXPECT_EQ(client.terminal().raw_output().find("\033[7mb"), std::string::npos);
}

TEST_F(help, a_line_longer_than_the_screen_continues_below)
{
    client.home().write_file(file, std::string(100, 'x') + "\nnext\n");
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_TRUE(row(2).starts_with(std::string(79, 'x')));
    EXPECT_TRUE(row(3).starts_with(std::string(20, 'x')));
    EXPECT_EQ(row(4), "next");
}

TEST_F(help, very_long_lines_and_texts_show_their_end)
{
    client.home().write_file(file, std::string(1'000'000, 'y') + "\nthe end\n");
    ASSERT_TRUE(client.start({}));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return row(22) == "the end"; }, "its end"));
    EXPECT_EQ(row(20), std::string(80, 'y'));
    EXPECT_EQ(row(2), std::string(79, 'y')) << "the blank's place";
}

TEST_F(help, tabs_go_to_the_next_multiple_of_8_columns)
{
    client.home().write_file(file, "\ta\n"
                                   "\ta\n"
                                   "1234567\tb\n"
                                   "12345678\tc\td\n" +
                                       std::string(85, 'x') + "\te\n" + std::string(76, 'y') +
                                       "\tf\n");
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(2), "        a") << "beside the blank that goes";
    EXPECT_EQ(row(3), "        a");
    EXPECT_EQ(row(4), "1234567 b");
    EXPECT_EQ(row(5), "12345678        c       d");
    EXPECT_EQ(row(6), std::string(80, 'x'));
    EXPECT_EQ(row(7), "xxxxx   e");
    EXPECT_EQ(row(8), std::string(76, 'y'));
    EXPECT_EQ(row(9), "f");
}

TEST_F(help, tabs_stop_at_the_edge_of_other_widths)
{
    client.home().write_file(file, std::string(90, 'x') + "\n" + std::string(98, 'y') + "\tz\n");
    ASSERT_TRUE(client.start({}, {.rows = 24, .columns = 100}));
    ASSERT_TRUE(open_help());
    EXPECT_EQ(row(3), std::string(98, 'y'));
    EXPECT_EQ(row(4), "z");
}

TEST_F(help, a_text_of_any_length_shows_its_end)
{
    client.home().write_file(file, make_numbered_lines(300'000));
    ASSERT_TRUE(client.start({}));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return row(22) == "line 300000"; }, "its end"));
    for (int number = 0; number < 22; ++number) {
        const std::string text = "line " + std::to_string(299'978 + number);
        EXPECT_EQ(row(number), number == 2 ? text.substr(1) : text);
    }
    EXPECT_EQ(row(last_row), "");
}

TEST_F(help, a_text_of_gigabytes_is_not_read_from_its_beginning)
{
    client.home().write_file(file, "");
    const std::string path = client.home().path_of(file);
    ASSERT_EQ(truncate(path.c_str(), 500'000'000'000), 0);
    std::ofstream{path, std::ios::app} << "\n" << make_numbered_lines(40);
    ASSERT_TRUE(client.start({}));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return row(22) == "line 40"; }, "its end"));
    EXPECT_EQ(row(0), "line 18");
}

TEST_F(help, a_device_that_never_ends_shows_no_text)
{
    ASSERT_EQ(symlink("/dev/zero", client.home().path_of(file).c_str()), 0);
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    expect_title_and_hint_alone();
}

TEST_F(help, zero_bytes_end_a_line_early_and_do_no_harm)
{
    client.home().write_file(file, std::string{"ab\0cd\nnext\n", 11});
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_help());
    EXPECT_TRUE(row(2).starts_with("ab"));
    EXPECT_EQ(row(last_row), std::string(58, ' ') + hint);
}

} // namespace
