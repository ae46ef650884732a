// help_text_test.cpp - the installed help text fits the smallest usual terminal.
#include "ui/help.hpp"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace
{

// The title, an empty row and the hint take 3 of 24 rows; the cursor takes one of 80 columns.
constexpr int rows_for_text = 21;
constexpr std::size_t columns_for_text = 79;

std::ifstream open_help()
{
    return std::ifstream{std::string{SOURCE_FOLDER "/share/"} + help_name};
}

TEST(help_text, fits_a_terminal_of_24_rows_and_80_columns)
{
    std::ifstream file = open_help();
    ASSERT_TRUE(file);
    int rows = 0;
    for (std::string line; std::getline(file, line); ++rows) {
        EXPECT_LE(line.size(), columns_for_text) << line;
        EXPECT_TRUE(std::ranges::all_of(line, [](char c) { return c >= ' ' && c < 0x7F; })) << line;
    }
    EXPECT_GT(rows, 0);
    EXPECT_LE(rows, rows_for_text);
}

TEST(help_text, names_every_command_key)
{
    std::ifstream file = open_help();
    const std::string text{std::istreambuf_iterator<char>{file}, {}};
    for (const char* key :
         {"Up, Down", "^L", "^D", "^I", "^A", "Enter", "^O", "^P", "^R", "^E", "^H", "^X"})
        EXPECT_NE(text.find(key), std::string::npos) << key;
}

} // namespace
