// toml_characters_test.cpp - which characters outside of ASCII are foreign to TOML.
#include "server/tovrikd/toml_characters.hpp"

#include <gtest/gtest.h>

namespace
{

using tovrik::toml_foreign_line;

TEST(toml_characters, are_at_home_in_quotes_and_comments)
{
    for (const char* const text : {
             "",
             "name = 'plain'",
             "\xEF\xBB\xBFname = 'behind a byte order mark'",
             "# Z\xC3\xBCrich",
             "a = 1 # Z\xC3\xBCrich\nb = 2",
             "a = 'Z\xC3\xBCrich'",
             "a = \"Z\xC3\xBCrich\"",
             "\"Z\xC3\xBCrich\" = 1",
             "a = \"one \\\" Z\xC3\xBCrich\"",
             "a = \"# Z\xC3\xBCrich\"",
             "a = \"\"\"\none \" two \"\" Z\xC3\xBCrich\n\"\"\"",
             "a = '''\none ' two '' Z\xC3\xBCrich\n'''",
             "a = \"\"\"one\"\"\"\"\" # Z\xC3\xBCrich",
             "a = \"\"\"one \\\"\"\"\" # Z\xC3\xBCrich",
             "a = ''\nb = 'Z\xC3\xBCrich'",
         })
        EXPECT_EQ(toml_foreign_line(text), 0U) << text;
}

TEST(toml_characters, are_foreign_elsewhere_and_told_by_their_line)
{
    const struct {
        const char* text;
        unsigned line;
    } rows[] = {
        {"\xC3\xA9 = 1", 1},
        {"a = 1\n\n[\xC3\xA9]", 3},
        {"a = 1\xC2\xA0", 1},
        {"# Z\xC3\xBCrich\n\xC3\xA9", 2},
        {"a = 'one'\xC3\xA9", 1},
        {"a = 'one\\'\xC3\xA9", 1},
        {"a = \"one\"\xC3\xA9", 1},
        {"a = 'open\n\xC3\xA9", 2},
        {"a = \"\"\"one\"\"\"\xC3\xA9", 1},
        {"a = \"\"\"one\"\"\"\"\"\xC3\xA9", 1},
        {"a = ''''one'''\n\xC3\xA9", 2},
        {"a = '''\n\n'''\n\xFF", 4},
    };
    for (const auto& row : rows)
        EXPECT_EQ(toml_foreign_line(row.text), row.line) << row.text;
}

} // namespace
