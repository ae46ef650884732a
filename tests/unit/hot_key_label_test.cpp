// hot_key_label_test.cpp - labels without their sign, and with their hot key's letter in bold.
#include "ui/hot_key_label.hpp"

#include "ui/glyphs.hpp"
#include "ui/window.hpp"
#include "unit/headless_screen.hpp"

#include <gtest/gtest.h>

namespace
{

class hot_key_label : public testing::Test
{
protected:
    /// A row after a label was drawn in it, with "*" before each bold character.
    std::string draw(int row, int column, const char* label) const
    {
        glyphs_attribute(window.get(), colour::text, false);
        drawn_cells = hot_key_label_draw(window.get(), row, column, label);
        std::string text;
        for (int at = 0; at < getmaxx(window.get()); ++at) {
            const chtype cell = mvwinch(window.get(), row, at);
            text += (cell & A_BOLD) != 0 ? "*" : "";
            text += static_cast<char>(cell & A_CHARTEXT);
        }
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }

    headless_screen screen;
    const unique_window window{newwin(4, 30, 0, 0)};
    mutable int drawn_cells = -1;
};

TEST_F(hot_key_label, shows_the_letter_after_the_sign_in_bold)
{
    EXPECT_EQ(draw(0, 0, "~Save it"), "*Save it");
    EXPECT_EQ(drawn_cells, 7);
    EXPECT_EQ(draw(1, 3, "Sa~ve it all"), "   Sa*ve it all");
    EXPECT_EQ(drawn_cells, 11);
    EXPECT_EQ(screen.pair_at(window.get(), 1, 5), colour_number(colour::text));
}

TEST_F(hot_key_label, shows_a_label_without_a_sign_plainly)
{
    EXPECT_EQ(draw(2, 1, "Nothing"), " Nothing");
    EXPECT_EQ(drawn_cells, 7);
}

TEST_F(hot_key_label, leaves_a_letter_far_to_the_right_plain)
{
    EXPECT_EQ(draw(0, 2, "abcd~efg"), "  abcd*efg") << "column 6, and 7 letters";
    EXPECT_EQ(draw(1, 3, "abcd~efg"), "   abcdefg") << "column 7, and 7 letters";
}

TEST_F(hot_key_label, leaves_the_next_text_plain)
{
    EXPECT_EQ(draw(0, 0, "~a"), "*a");
    glyphs_write(window.get(), "b");
    EXPECT_EQ(mvwinch(window.get(), 0, 1) & A_BOLD, 0U);
}

} // namespace
