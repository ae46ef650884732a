// sim_text_fields_test.cpp - the fields of the practice server's requests.
#include "server/base/text_fields.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

TEST(sim_text_fields, are_cut_at_every_separator)
{
    using fields = std::vector<std::string_view>;
    EXPECT_EQ(tovrik::split_fields("a\t\tb", '\t'), (fields{"a", "", "b"}));
    EXPECT_EQ(tovrik::split_fields("", '\t'), fields{""});
    EXPECT_EQ(tovrik::split_fields("\t", '\t'), (fields{"", ""}));
}

TEST(sim_text_fields, are_clean_when_short_and_without_control_characters)
{
    EXPECT_TRUE(tovrik::is_clean_field("M\xfcnchen", 7));
    EXPECT_FALSE(tovrik::is_clean_field("M\xfcnchen", 6));
    for (const char c : {'\n', '\0', '\x1b', '\x7f', '\x9b'})
        EXPECT_FALSE(tovrik::is_clean_field(std::string(1, c), 10)) << static_cast<int>(c);
}

TEST(sim_text_fields, spellings_of_one_flight_compare_equal)
{
    const struct {
        const char* number;
        const char* key;
    } rows[] = {{"LH0400", "LH400"}, {"lh400", "LH400"}, {"DLH0400", "DLH400"}, {"5X0012", "5X12"},
                {"9V000", "9V0"},    {"BA0", "BA0"},     {"BA117A", "BA117A"},  {"", ""},
                {"L", "L"},          {"LH", "LH"}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::flight_key(row.number), row.key) << row.number;
}

TEST(sim_text_fields, match_wildcards)
{
    const struct {
        const char* pattern;
        const char* text;
        bool matches;
    } rows[] = {{"D-AIQA", "D-AIQA", true},
                {"d-aiqa", "D-AIQA", true},
                {"D-AI__", "D-AIQA", true},
                {"D-AI??", "D-AIQA", true},
                {"D-AI_", "D-AIQA", false},
                {"D-*", "D-AIQA", true},
                {"*QA", "D-AIQA", true},
                {"*A*A*", "D-AIQA", true},
                {"*A*A*A", "D-AIQA", false},
                {"*", "", true},
                {"", "", true},
                {"", "x", false},
                {"?", "", false},
                {"**", "x", true},
                {"a*b*c", "axxbxxbxc", true},
                {"a*b*c", "axxbxxbx", false},
                {"D-AIQA", "D-AIQ", false}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::wildcard_match(row.pattern, row.text), row.matches)
            << row.pattern << " " << row.text;
}

TEST(sim_text_fields, match_long_patterns_without_long_thought)
{
    std::string pattern;
    for (int i = 0; i < 30; ++i)
        pattern += "a*";
    EXPECT_FALSE(tovrik::wildcard_match(pattern + "b", std::string(20000, 'a')));
}

} // namespace
