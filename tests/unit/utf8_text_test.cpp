// utf8_text_test.cpp - where UTF-8 is valid.
#include "server/base/utf8_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

TEST(utf8_text, is_valid_up_to_the_first_byte_that_is_none_of_a_character)
{
    const struct {
        std::string bytes;
        std::size_t valid;
    } rows[] = {
        {"", 0},
        {"plain", 5},
        {"Z\xC3\xBCrich", 7},
        {"\xE2\x82\xAC\xF0\x9F\x9B\xA9", 7},
        {"a\xFF", 1},
        {"a\x80", 1},
        {"a\xC3", 1},
        {"a\xC3(", 1},
        {"a\xC0\xAF", 1},
        {"a\xE0\x80\xAF", 1},
        {"a\xED\xA0\x80", 1},
        {"a\xF4\x90\x80\x80", 1},
        {"\xC3\xBC\xE2\x82", 2},
    };
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::utf8_valid_length(row.bytes), row.valid) << row.bytes;
}

TEST(utf8_text, is_read_character_by_character)
{
    const std::string text = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x9B\xA9";
    std::size_t at = 0;
    for (const char32_t wanted : {U'a', U'\u00FC', U'\u20AC', U'\U0001F6E9'})
        EXPECT_EQ(tovrik::utf8_read(text, at), wanted);
    EXPECT_EQ(at, text.size());
}

} // namespace
