// glyphs_test.cpp - how bytes appear in a window.
#include "unit/headless_screen.hpp"

#include "ui/glyphs.hpp"
#include "ui/window.hpp"

#include <clocale>
#include <cwchar>
#include <gtest/gtest.h>

namespace
{

class glyphs : public testing::Test
{
protected:
    /// The characters of a row's first cells.
    std::wstring cells(int row, int count) const
    {
        std::wstring text;
        for (int column = 0; column < count; ++column) {
            cchar_t cell;
            wchar_t character[CCHARW_MAX + 1] = {};
            attr_t attributes = 0;
            short pair = 0;
            mvwin_wch(window.get(), row, column, &cell);
            getcchar(&cell, character, &attributes, &pair, nullptr);
            text += character;
        }
        return text;
    }

    headless_screen screen;
    const unique_window window{newwin(2, 10, 0, 0)};
};

TEST_F(glyphs, show_blanks_for_layout_bytes_and_question_marks_for_control_bytes)
{
    const struct {
        const char* behaviour;
        std::string_view text;
        std::wstring shown;
    } rows[] = {
        {"letters and blanks stay", "aZ ~", L"aZ ~"},
        {"tab, carriage return and line feed", "a\tb\rc\nd", L"a b c d"},
        {"all other control characters", {"\0\x01\x1B\x1F\x7F", 5}, L"?????"},
        {"the upper control characters", "\x80\x9B\x9F", L"???"},
        {"the upper half", "\xA0\xC4\xFF", L"\u00A0\u00C4\u00FF"},
    };
    for (const auto& row : rows) {
        werase(window.get());
        glyphs_write_at(window.get(), 1, 0, row.text);
        EXPECT_TRUE(cells(1, static_cast<int>(row.text.size())) == row.shown) << row.behaviour;
    }
}

TEST_F(glyphs, stay_out_of_places_outside_the_window)
{
    for (const auto& [row, column] : {std::pair{2, 0}, {0, 10}, {-1, 0}, {0, -1}}) {
        glyphs_write_at(window.get(), row, column, "x");
        EXPECT_TRUE(cells(0, 10) == std::wstring(10, L' ')) << row << " " << column;
    }
}

TEST_F(glyphs, end_at_the_edge)
{
    EXPECT_EQ(glyphs_write_to_edge(window.get(), 0, 7, "abcdef"), 10);
    EXPECT_TRUE(cells(0, 10) == L"       abc");
    EXPECT_TRUE(cells(1, 10) == std::wstring(10, L' '));
    EXPECT_EQ(glyphs_write_to_edge(window.get(), 1, 12, "abc"), 12);
    EXPECT_EQ(glyphs_write_to_edge(window.get(), 1, 0, "abc"), 3);
}

TEST_F(glyphs, have_one_cell_each_for_curses_where_the_locale_knows_no_letters)
{
    std::setlocale(LC_CTYPE, "C");
    for (wchar_t letter = 0xA0; letter <= 0xFF; ++letter) {
        // Curses refuses further characters in a cell whose first one takes none.
        const wchar_t cell_text[] = {letter, L'\u0301', 0};
        cchar_t cell;
        EXPECT_EQ(setcchar(&cell, cell_text, A_NORMAL, 0, nullptr), OK) << static_cast<int>(letter);
    }
}

TEST_F(glyphs, have_the_width_that_the_c_library_gives_other_characters)
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(wcwidth(L'\0'), 0);
    EXPECT_EQ(wcwidth(L'\n'), -1);
    EXPECT_EQ(wcwidth(L'a'), 1);
    EXPECT_EQ(wcwidth(L'\x80'), -1);
    EXPECT_EQ(wcwidth(L'\u0301'), 0) << "a combining accent";
    EXPECT_EQ(wcwidth(L'\u2500'), 1) << "a line of a frame";
    EXPECT_EQ(wcwidth(L'\u6F22'), 2) << "an ideograph";
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(wcwidth(L'\u2500'), -1);
}

TEST_F(glyphs, draw_nothing_without_a_window)
{
    glyphs_write(nullptr, "x");
    glyphs_write_at(nullptr, 0, 0, "x");
    EXPECT_EQ(glyphs_write_to_edge(nullptr, 0, 5, "x"), 5);
    glyphs_end_line(nullptr);
    glyphs_attribute(nullptr, colour::text, true);
}

} // namespace
