// support_output_test.cpp - what curses writes to a terminal is told from what others would write.
#include "support/terminal_output.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr const char* sequences_of_curses[] = {
    "plain text",
    "\r\n\b\t\a",
    "\033[H\033[2J\033[12;34H\033[5d\033[7G\033[K\033[1K\033[3P\033[2@\033[4L\033[4M\033[3X",
    "\033[0;1;38;5;200;48;5;17m\033[m\017\033(B\033)0",
    "\033[?1049h\033[22;0;0t\033[?1h\033=\033[?25l\033[?1034h",
    "\033[34h\033[?25h\033[?1l\033>\033[?1049l\033[23;0;0t\033]104\a",
    "\033M\033E\0337\0338\033[2;10r\033[3S\033[3T",
};

constexpr const char* sequences_of_others[] = {
    "\033]0;OWNED\a", "\033[31337m", "\033c",   "\033[6n",
    "\033P1q\033\\",  "\033[?1000h", "\033[5i", "\033[>4;2m",
    "\033#8",         "\005",        "\v",      "\f",
    "\x7F",           "\033[!p",     "\033*0",  "\033]52;a",
    "\033[1;2;3t",
};

TEST(support_output, has_no_fault_in_what_curses_writes)
{
    for (const bool utf8 : {true, false})
        for (const char* sequence : sequences_of_curses) {
            output_inspection inspection{utf8};
            inspection.feed(sequence);
            EXPECT_EQ(inspection.fault(), "") << testing::PrintToString(sequence);
        }
}

TEST(support_output, finds_what_only_others_write)
{
    for (const bool utf8 : {true, false})
        for (const char* sequence : sequences_of_others) {
            output_inspection inspection{utf8};
            inspection.feed("before " + std::string{sequence} + " after");
            EXPECT_NE(inspection.fault(), "") << testing::PrintToString(sequence);
        }
}

TEST(support_output, knows_the_characters_of_the_locale)
{
    const std::pair<const char*, bool> texts[] = {{"\xC3\xA4 \xE2\x94\x82 \xF0\x9F\x98\x80", true},
                                                  {"\xE4\xFF", false}};
    for (const auto& [text, is_utf8] : texts) {
        output_inspection right{is_utf8};
        right.feed(text);
        right.feed(".");
        EXPECT_EQ(right.fault(), "") << testing::PrintToString(text);
        output_inspection wrong{!is_utf8};
        wrong.feed(text);
        wrong.feed(".");
        EXPECT_NE(wrong.fault(), "") << testing::PrintToString(text);
    }
}

TEST(support_output, finds_second_control_characters_and_another_character_set)
{
    const std::pair<const char*, bool> texts[] = {{"\x9B", false}, {"\xC2\x9B", true},
                                                  {"\x9B", true},  {"\016", true},
                                                  {"\xC2", true},  {"\xE2\x94", true}};
    for (const auto& [text, is_utf8] : texts) {
        output_inspection inspection{is_utf8};
        inspection.feed(std::string{text} + "after");
        EXPECT_NE(inspection.fault(), "") << testing::PrintToString(text);
    }
    output_inspection old_terminal{false};
    old_terminal.feed("\016qqq\017");
    EXPECT_EQ(old_terminal.fault(), "");
}

TEST(support_output, does_not_mind_where_the_output_is_cut)
{
    output_inspection good{true};
    output_inspection bad{true};
    std::string all;
    for (const char* sequence : sequences_of_curses)
        all += sequence;
    for (const char byte : all + "\xE2\x94\x82") {
        good.feed({&byte, 1});
        ASSERT_EQ(good.fault(), "") << testing::PrintToString(all);
    }
    for (const char byte : std::string{"\033[31337m."})
        bad.feed({&byte, 1});
    EXPECT_NE(bad.fault(), "");
}

} // namespace
