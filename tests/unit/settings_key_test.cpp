// settings_key_test.cpp - what the settings page does with each key.
#include "data/settings_page.hpp"
#include "unit/net_fixture.hpp"

#include "support/temp_home.hpp"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int mark_column = 3;
constexpr int log_folder_key = 0xEC;
constexpr int report_folder_key = 0xF2;

class settings_key_press : public net_test
{
protected:
    settings_key_press() : net_test(80)
    {
        EXPECT_EQ(chdir(folder.path().c_str()), 0);
        folder.make_folder("logs");
    }
    ~settings_key_press() override
    {
        EXPECT_EQ(fchdir(former_folder.get()), 0);
    }
    settings_key_press(const settings_key_press&) = delete;
    settings_key_press& operator=(const settings_key_press&) = delete;

    void answer(int key, const std::string& typed)
    {
        type_ahead(typed);
        settings_key(key);
    }
    char mark_at(int row) const
    {
        return static_cast<char>(mvwinch(app_state.settings_win, row, mark_column) & A_CHARTEXT);
    }
    /// Every mark of the page, in the order of the table.
    std::string marks() const
    {
        std::string all;
        for (int row = 2; row <= 11; ++row)
            all += mark_at(row);
        return all;
    }

    temp_home folder;

private:
    unique_fd former_folder{open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
};

struct switch_row {
    int key;
    std::uint32_t bit;
    int row;
};

constexpr switch_row switches[] = {
    {0xE1, 0x01, 2}, {0xE9, 0x02, 4}, {0xE8, 0x08, 5},  {0xE6, 0x10, 6},
    {0xF4, 0x20, 7}, {0xE4, 0x40, 9}, {0xE5, 0x80, 10}, {0xF3, 0x04, 11},
};

TEST_F(settings_key_press, finds_its_rows_where_the_page_has_put_them)
{
    // Lines without a hot key have no row.
    EXPECT_EQ(std::to_array(app_state.checkbox_rows),
              std::to_array({2, -1, 4, 5, 6, 7, -1, 9, 10, 11}));
    EXPECT_EQ(std::to_array(app_state.text_rows), std::to_array({15, 16}));
    EXPECT_EQ(std::to_array(app_state.text_columns), std::to_array({23, 22}));
}

TEST_F(settings_key_press, flips_one_bit_and_one_mark)
{
    for (const switch_row& expected : switches) {
        settings_key(expected.key);
        EXPECT_EQ(app_state.setting_flags, expected.bit);
        EXPECT_EQ(std::ranges::count(marks(), 'X'), 1);
        EXPECT_EQ(mark_at(expected.row), 'X');
        EXPECT_EQ(screen.pair_at(app_state.settings_win, expected.row, mark_column), 7);
        EXPECT_TRUE(screen.is_bold_at(app_state.settings_win, expected.row, mark_column));
        settings_key(expected.key);
        EXPECT_EQ(app_state.setting_flags, 0U);
        EXPECT_EQ(mark_at(expected.row), ' ');
    }
}

TEST_F(settings_key_press, leaves_other_bits_alone)
{
    app_state.setting_flags = 0xFFFFFFFF;
    settings_key(0xE4);
    EXPECT_EQ(app_state.setting_flags, 0xFFFFFFBF);
}

TEST_F(settings_key_press, ignores_all_other_keys)
{
    const std::string before = marks();
    for (int key = -2; key < 1024; ++key) {
        const bool is_hot = key == log_folder_key || key == report_folder_key ||
                            std::ranges::any_of(switches, [key](const switch_row& known) {
                                return known.key == key;
                            });
        if (!is_hot)
            settings_key(key);
    }
    EXPECT_EQ(app_state.setting_flags, 0U);
    EXPECT_EQ(marks(), before);
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(settings_key_press, flips_switches_whose_row_was_never_drawn)
{
    std::ranges::fill(app_state.checkbox_rows, -1);
    settings_key(0xE1);
    EXPECT_EQ(app_state.setting_flags, 0x01U);
    EXPECT_EQ(marks(), std::string(10, ' '));
}

TEST_F(settings_key_press, works_without_a_page)
{
    delwin(app_state.settings_win);
    app_state.settings_win = nullptr;
    app_state.settings_shown = 1;
    settings_key(0xE1);
    EXPECT_EQ(app_state.setting_flags, 0x01U);
    answer(log_folder_key, "logs\n");
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
}

TEST_F(settings_key_press, stores_folders_and_strips_all_slashes_at_the_end)
{
    answer(log_folder_key, "logs/\n");
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
    EXPECT_EQ(app_state.setting_texts[ReportPath], nullptr);
    answer(report_folder_key, ".//logs///\n");
    EXPECT_STREQ(app_state.setting_texts[ReportPath], ".//logs");
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
    EXPECT_EQ(screen.row_text(app_state.settings_win, 15), " Folder for Logfiles: logs");
    EXPECT_EQ(screen.row_text(app_state.settings_win, 16), " Folder for Reports: .//logs");
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(settings_key_press, refuses_anything_but_a_folder)
{
    folder.write_file("plain", "a file");
    ASSERT_EQ(symlink("logs", "link"), 0);
    ASSERT_EQ(symlink("nowhere", "dangling"), 0);
    std::size_t refused = 0;
    for (const char* typed : {"absent\n", "plain\n", "link\n", "dangling\n", "/\n", "plain/\n",
                              "link/\n", "link//\n", "//\n"}) {
        answer(log_folder_key, typed);
        EXPECT_EQ(app_state.setting_texts[LogFilePath], nullptr) << typed;
        EXPECT_EQ(beeps(), ++refused) << typed;
    }
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(screen.row_text(app_state.settings_win, 15), " Folder for Logfiles:");
}

TEST_F(settings_key_press, changes_nothing_when_nothing_is_typed)
{
    app_state.setting_texts[LogFilePath] = owned_text("logs");
    answer(log_folder_key, "xyz\033");
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
    answer(report_folder_key, "\n");
    EXPECT_EQ(app_state.setting_texts[ReportPath], nullptr);
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(settings_key_press, begins_a_prompt_with_the_folder_that_is_set)
{
    app_state.setting_texts[LogFilePath] = owned_text("lo");
    answer(log_folder_key, "gs\n");
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
}

TEST_F(settings_key_press, opens_no_prompt_without_memory_for_folders)
{
    char** texts = std::exchange(app_state.setting_texts, nullptr);
    settings_key(log_folder_key);
    app_state.setting_texts = texts;
    EXPECT_EQ(beeps(), 0U);
}

} // namespace
