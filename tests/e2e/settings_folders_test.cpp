// settings_folders_test.cpp - the two folders of the settings page: asking, checking, showing.
#include "e2e/settings_session.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

using namespace settings_places;

constexpr int box_row = 8; // of a screen with 24 rows and 80 columns
constexpr int box_column = 10;
constexpr int box_width = 62;
constexpr const char* log_question = "Folder for ~Logfiles";
constexpr const char* report_question = "Folder for ~Reports";

class settings_folders : public settings_test
{
protected:
    void SetUp() override
    {
        client.home().make_folder("logs");
        client.home().make_folder("reports");
        client.home().write_file("plain", "a file");
        settings.save_on_exit = true;
        settings.log_folder = "old";
        settings.report_folder = "";
    }

    [[nodiscard]] testing::AssertionResult ask(char letter)
    {
        client.terminal().send_meta(letter);
        return client.terminal().wait_for_text(letter == 'l' ? log_question : report_question);
    }
    [[nodiscard]] testing::AssertionResult box_closes()
    {
        return client.terminal().wait_for_no_text("RET=OK - ESC=CANCEL");
    }
    /// Answers an open prompt that has `preset` on its line.
    [[nodiscard]] testing::AssertionResult answer(const std::string& preset,
                                                  const std::string& text)
    {
        for (std::size_t at = 0; at < preset.size(); ++at)
            client.terminal().send_key(named_key::backspace);
        client.terminal().send(text);
        client.terminal().send_key(named_key::enter);
        return box_closes();
    }
    /// Asks for the log folder and answers; the page must be in front.
    [[nodiscard]] testing::AssertionResult enter_log_folder(const std::string& text)
    {
        const std::string preset = page_text(log_folder_row, log_folder_column);
        const testing::AssertionResult asked = ask('l');
        return asked ? answer(preset, text) : asked;
    }
    std::string edit_line()
    {
        return client.terminal().screen().text(box_row + 1, box_column + 2, box_width - 3);
    }
    /// Leaves, and compares the folders that were saved. A folder that was never set is "./".
    void expect_saved(const std::string& log_folder, const std::string& report_folder)
    {
        client.quit();
        client_settings saved = settings;
        saved.log_folder = log_folder;
        saved.report_folder = report_folder;
        EXPECT_EQ(client.home().read_config(), config_text(saved));
    }

    client_settings settings;
};

TEST_F(settings_folders, the_prompt_is_60_wide_and_has_the_raw_label_and_the_folder)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(ask('l'));
    const terminal_screen& screen = client.terminal().screen();
    std::string top = "┌─[ Folder for ~Logfiles ]";
    for (int column = 26; column < box_width - 1; ++column)
        top += "─";
    std::string bottom = "└";
    for (int column = 1; column < 37; ++column)
        bottom += "─";
    EXPECT_EQ(screen.text(box_row, box_column, box_width), top + "┐");
    EXPECT_EQ(screen.text(box_row + 1, box_column, box_width),
              "│ old_" + std::string(box_width - 7, ' ') + "│");
    EXPECT_EQ(screen.text(box_row + 2, box_column, box_width),
              bottom + "[ RET=OK - ESC=CANCEL ]─┘");
    client.terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(ask('r'));
    EXPECT_TRUE(client.terminal().shows("─[ Folder for ~Reports ]─"));
    EXPECT_TRUE(edit_line().starts_with("_ ")) << "nothing is set";
}

TEST_F(settings_folders, keep_the_typed_text_without_its_last_slash)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(enter_log_folder("logs/"));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == "logs"; }, "the folder"));
    EXPECT_EQ(client.terminal().cell(log_folder_row, log_folder_column),
              pair_cell(pairs::plain, true, "l"));
    ASSERT_TRUE(ask('r'));
    ASSERT_TRUE(answer("", client.home().path_of("reports")));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return page_text(report_folder_row, report_folder_column) ==
                   client.home().path_of("reports");
        },
        "the folder"));
    EXPECT_EQ(client.terminal().bells(), 0);
    expect_saved("logs", client.home().path_of("reports"));
}

TEST_F(settings_folders, a_preset_that_is_accepted_loses_its_slash_too)
{
    settings.log_folder = "./";
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(ask('l'));
    client.terminal().send_key(named_key::enter);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == "."; }, "the folder"));
    expect_saved(".", "./");
}

TEST_F(settings_folders, anything_but_a_folder_is_refused_with_only_a_beep)
{
    ASSERT_EQ(symlink("logs", client.home().path_of("link").c_str()), 0);
    ASSERT_TRUE(client.start(settings));
    const std::vector<std::string> notices = client.status_lines();
    ASSERT_TRUE(open_page());
    const std::string page = client.terminal().screen().whole_text();
    int bells = 0;
    for (const char* refused :
         {"absent", "plain", "link", "link//", "/", "//", "logs//x", "plain/", "logs "}) {
        SCOPED_TRACE(refused);
        ASSERT_TRUE(enter_log_folder(refused));
        ++bells;
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == bells; },
                                                 "a beep"));
        EXPECT_EQ(client.terminal().screen().whole_text(), page);
    }
    ASSERT_TRUE(close_page());
    EXPECT_EQ(client.status_lines(), notices);
    expect_saved("old", "./");
}

TEST_F(settings_folders, all_slashes_at_the_end_are_removed)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(enter_log_folder(".//logs///"));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == ".//logs"; }, "the folder"));
    expect_saved(".//logs", "./");
}

TEST_F(settings_folders, an_unknown_character_is_a_question_mark)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(ask('r'));
    client.terminal().send("a中b😀c");
    EXPECT_TRUE(client.terminal().wait_until([&] { return edit_line().starts_with("a?b?c_ "); },
                                             "one sign for each"));
}

TEST_F(settings_folders, escape_an_empty_line_and_a_time_out_change_nothing)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    const std::string page = client.terminal().screen().whole_text();
    ASSERT_TRUE(ask('l'));
    client.terminal().send("gs");
    client.terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(enter_log_folder(""));
    ASSERT_TRUE(ask('l'));
    client.clock().jump(11);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == page; }, "the same page"));
    EXPECT_EQ(client.terminal().bells(), 0);
    expect_saved("old", "./");
}

TEST_F(settings_folders, a_shorter_folder_leaves_nothing_of_a_longer_one)
{
    settings.log_folder = std::string(90, 'x');
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    EXPECT_EQ(page_text(log_folder_row, log_folder_column), std::string(56, 'x'));
    EXPECT_EQ(client.terminal().cell(log_folder_row, 79).text, "│");
    ASSERT_TRUE(ask('l'));
    EXPECT_EQ(edit_line().substr(0, 59), std::string(59, 'x')) << "cut where the prompt ends";
    ASSERT_TRUE(answer(std::string(59, 'x'), "logs"));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == "logs"; }, "the folder"));
    EXPECT_EQ(client.terminal().cell(log_folder_row, 79).text, "│");
    EXPECT_EQ(client.terminal().screen().text(log_folder_row, 0, 23), "│ Folder for Logfiles: ");
}

TEST_F(settings_folders, a_long_folder_ends_at_the_frame)
{
    const std::string name(40, 'd');
    client.home().make_folder("logs/" + name);
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    const std::string typed = "./././././logs/" + name;
    ASSERT_TRUE(enter_log_folder(typed + "zzzz12345678")); // 59 characters at most
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == 1; },
                                             "cut to a name that is not there"));
    ASSERT_TRUE(enter_log_folder("././" + typed));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return page_text(log_folder_row, log_folder_column) == ("././" + typed).substr(0, 56);
        },
        "the beginning of the folder"));
    EXPECT_EQ(client.terminal().cell(log_folder_row, 79).text, "│");
    expect_saved("././" + typed, "./");
}

TEST_F(settings_folders, are_checked_from_the_folder_where_the_program_was_started)
{
    client.home().make_folder("house/inner");
    client.home().write_file("house/ncursesclient.conf", config_text(settings));
    ASSERT_TRUE(client.start_as_it_is({.home_variable = client.home().path_of("house")}));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(enter_log_folder("inner"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == 1; },
                                             "a folder of the home is not meant"));
    ASSERT_TRUE(enter_log_folder("logs"));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == "logs"; }, "the folder"));
}

TEST_F(settings_folders, can_be_entered_while_the_page_is_hidden)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(ask('l'));
    ASSERT_TRUE(answer("old", "logs"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return panes_are_in_front(); }, "the panes"));
    EXPECT_FALSE(client.terminal().shows("Folder for Logfiles"));
    ASSERT_TRUE(open_page());
    EXPECT_EQ(page_text(log_folder_row, log_folder_column), "logs");
}

TEST_F(settings_folders, a_prompt_survives_a_resize_and_updates_the_new_page)
{
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(ask('l'));
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().text(11, 20).starts_with("┌─[ Folder for ~"); },
        "the box in the middle of the new screen"));
    ASSERT_TRUE(answer("old", "reports"));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return page_text(log_folder_row, log_folder_column) == "reports"; }, "the folder"));
    EXPECT_EQ(client.terminal().cell(log_folder_row, 99).text, "│");
    EXPECT_EQ(page_text(log_folder_row, 2), "Folder for Logfiles: reports");
    expect_saved("reports", "./");
}

} // namespace
