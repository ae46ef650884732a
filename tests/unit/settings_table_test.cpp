// settings_table_test.cpp - the tables' rows: files and users rely on their words, order and bits.
#include "data/settings_table.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string_view>

namespace
{

TEST(checkbox_setting_table, holds_its_rows_in_the_order_of_page_and_file)
{
    const checkbox_setting expected[] = {
        {"1", "Save ~ACARS data to tovrik-style logfile", "ACARSLog", 0x01, 0xE1},
        {"0", "The Logfilename is created from the servername+.log", "*", 0, 0},
        {"1", "Show ~Informations about Contacts", "ContactInfo", 0x02, 0xE9},
        {"1", "Save ~Hostpasswords to configuration file", "SavePasswords", 0x08, 0xE8},
        {"1", "Show ~FlightStats on every server", "FlightStats", 0x10, 0xE6},
        {"1", "Save all ~Transmissions to one logfile", "SaveToOne", 0x20, 0xF4},
        {"0", "Logfilename is ACARS.log and will be created within the current folder", "*", 0, 0},
        {"1", "~Dont show uplink messages", "NoUplinks", 0x40, 0xE4},
        {"1", "F~etch new Serverlist during Startup", "FetchOnStart", 0x80, 0xE5},
        {"1", "~Save configuration on exit", "SaveOnExit", 0x04, 0xF3},
    };
    ASSERT_EQ(std::size(expected), checkbox_setting_count);
    for (std::size_t index = 0; index < checkbox_setting_count; ++index) {
        const checkbox_setting& row = checkbox_setting_table[index];
        EXPECT_STREQ(row.kind, expected[index].kind) << index;
        EXPECT_STREQ(row.label, expected[index].label) << index;
        EXPECT_STREQ(row.key, expected[index].key) << index;
        EXPECT_EQ(row.bit, expected[index].bit) << index;
        EXPECT_EQ(row.hot_key, expected[index].hot_key) << index;
    }
    EXPECT_EQ(checkbox_setting_table[checkbox_setting_count].bit, 0xFFFFFF01U);
}

TEST(text_setting_table, holds_the_two_folders)
{
    EXPECT_STREQ(text_setting_table[0].label, "Folder for ~Logfiles");
    EXPECT_STREQ(text_setting_table[0].key, "LogFilePath");
    EXPECT_EQ(text_setting_table[0].index, 0);
    EXPECT_EQ(text_setting_table[0].hot_key, 0xEC);
    EXPECT_STREQ(text_setting_table[1].label, "Folder for ~Reports");
    EXPECT_STREQ(text_setting_table[1].key, "ReportPath");
    EXPECT_EQ(text_setting_table[1].index, 1);
    EXPECT_EQ(text_setting_table[1].hot_key, 0xF2);
    for (std::size_t index = 0; index < setting_text_count; ++index)
        EXPECT_STREQ(text_setting_table[index].kind, "1");
    EXPECT_EQ(text_setting_table[setting_text_count].kind, nullptr);
    EXPECT_STREQ(unset_folder, "./");
}

void expect_marked_letter(const char* label, int hot_key)
{
    const char* mark = std::strchr(label, '~');
    if (hot_key == 0) {
        EXPECT_EQ(mark, nullptr) << label;
        return;
    }
    ASSERT_NE(mark, nullptr) << label;
    EXPECT_EQ(std::tolower(static_cast<unsigned char>(mark[1])) | 0x80, hot_key) << label;
}

TEST(settings_tables, mark_the_letter_of_each_hot_key)
{
    for (std::size_t index = 0; index < checkbox_setting_count; ++index)
        expect_marked_letter(checkbox_setting_table[index].label,
                             checkbox_setting_table[index].hot_key);
    for (std::size_t index = 0; index < setting_text_count; ++index)
        expect_marked_letter(text_setting_table[index].label, text_setting_table[index].hot_key);
}

} // namespace
