// tovrikd_ascii_form_test.cpp - texts in ASCII alone, and back.
#include "server/tovrikd/ascii_form.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using tovrik::ascii_form_make;
using tovrik::ascii_form_original;

TEST(ascii_form, has_no_byte_above_7f_and_turns_back)
{
    std::string all_bytes;
    for (int byte = 0; byte < 256; ++byte)
        all_bytes += static_cast<char>(byte);
    for (const std::string& text :
         {std::string{}, std::string{"plain\n"}, all_bytes, std::string{"Z\xC3\xBCrich x0y x1yC3"},
          all_bytes + all_bytes}) {
        const auto form = ascii_form_make(text);
        EXPECT_TRUE(std::ranges::all_of(form.text, [](unsigned char c) { return c < 0x80; }));
        EXPECT_EQ(text.find(form.mark), std::string::npos);
        EXPECT_EQ(ascii_form_original(form, form.text), text);
    }
}

TEST(ascii_form, of_ascii_is_the_text_itself)
{
    EXPECT_EQ(ascii_form_make("[http]\nport = 1\n").text, "[http]\nport = 1\n");
}

TEST(ascii_form, leaves_a_broken_piece_as_it_is)
{
    const auto form = ascii_form_make("\xC3\xA9");
    EXPECT_EQ(form.text, "x0yC3x0yA9");
    EXPECT_EQ(ascii_form_original(form, "saw 'x0yC3x0yA9', x0yC, x0y and x0yGG"),
              "saw '\xC3\xA9', x0yC, x0y and x0yGG");
    EXPECT_EQ(ascii_form_original(form, "x0y"), "x0y");
}

} // namespace
