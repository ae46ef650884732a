// pane_test.cpp - how texts get into panes: cut, scrolled, line by line.
#include "unit/net_fixture.hpp"

#include "ui/pane.hpp"
#include "ui/window.hpp"

#include <algorithm>

namespace
{

constexpr int rows = 60; // together with the columns, enough for more than the longest text
constexpr int columns = 100;

class pane_printing : public net_test
{
protected:
    pane_printing()
    {
        scrollok(window.get(), TRUE);
    }

    /// A row of the window without its trailing blanks.
    std::string row(int number) const
    {
        return text_from(number, columns);
    }
    /// The text from the start of a row on, also without trailing blanks.
    std::string text_from(int first_row, int cells) const
    {
        std::string text;
        for (int at = 0; at < cells; ++at)
            text += static_cast<char>(
                mvwinch(window.get(), first_row + at / columns, at % columns) & A_CHARTEXT);
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }
    void print(const char* format, const char* argument, int at_row = 0,
               bool scroll_first = false) const
    {
        pane_printf(window.get(), colour::text, 0, at_row, false, scroll_first, format, argument);
    }

    const unique_window window{newwin(rows, columns, 0, 0)};
};

TEST_F(pane_printing, cuts_a_formatted_text_at_4093_characters)
{
    for (const std::size_t length : {4092U, 4093U, 4094U, 5000U}) {
        werase(window.get());
        print("%s", std::string(length, 'x').c_str());
        EXPECT_EQ(text_from(0, rows * columns).size(), std::min<std::size_t>(length, 4093));
    }
}

TEST_F(pane_printing, cuts_a_verbatim_format_at_4095_characters)
{
    for (const std::size_t length : {4094U, 4095U, 4096U, 5000U}) {
        for (const std::string mark : {"%*", "%]"}) {
            werase(window.get());
            print((mark + std::string(length - 2, 'x')).c_str(), "unused");
            const std::string shown = text_from(0, rows * columns);
            EXPECT_EQ(shown.size(), std::min<std::size_t>(length, 4095));
            EXPECT_EQ(shown.substr(0, 3), mark + 'x');
        }
    }
}

TEST_F(pane_printing, writes_the_second_of_two_lines_over_the_first_and_scrolls_once)
{
    print("%s", "first line\nsecond", 10);
    EXPECT_EQ(row(9), "secondline");
    EXPECT_EQ(row(10), "");
}

TEST_F(pane_printing, puts_each_of_many_lines_onto_the_freshly_scrolled_row)
{
    print("%s", "A\nB\nC\nD", 10);
    EXPECT_EQ(row(7), "B");
    EXPECT_EQ(row(8), "C");
    EXPECT_EQ(row(9), "D");
    EXPECT_EQ(row(10), "");
}

TEST_F(pane_printing, scrolls_once_more_for_a_line_feed_at_the_end)
{
    print("%s", "A\n", 10);
    EXPECT_EQ(row(9), "A");
    EXPECT_EQ(row(10), "");
    print("%s", "B\nC\n", 20);
    EXPECT_EQ(row(18), "C");
    EXPECT_EQ(row(19), "");
}

TEST_F(pane_printing, scrolls_before_it_writes_when_it_is_asked_to)
{
    print("%s", "above", 10);
    print("%s", "below", 10, true);
    EXPECT_EQ(row(9), "above");
    EXPECT_EQ(row(10), "below");
    print("%s", "again", 10, false);
    EXPECT_EQ(row(9), "above");
    EXPECT_EQ(row(10), "again");
}

TEST_F(pane_printing, writes_nothing_at_a_place_outside_the_window)
{
    print("%s", "nowhere", rows);
    EXPECT_EQ(text_from(0, rows * columns), "");
}

TEST_F(pane_printing, leaves_the_pair_set_without_bold)
{
    pane_printf(window.get(), colour::success, 0, 0, true, false, "bold");
    EXPECT_NE(mvwinch(window.get(), 0, 0) & A_BOLD, 0U);
    attr_t attributes = A_BOLD;
    short pair = 0;
    wattr_get(window.get(), &attributes, &pair, nullptr);
    EXPECT_EQ(attributes & A_BOLD, 0U);
    EXPECT_EQ(pair, 7);
}

TEST_F(pane_printing, scrolls_characters_with_their_colours_and_bold)
{
    pane_printf(window.get(), colour::success, 0, 4, true, false, "|one");
    pane_printf(window.get(), colour::error, 0, 3, false, false, "|two");
    status_scroll(window.get(), 1, 3, 3);
    EXPECT_EQ(row(2), " tw") << "from column 1, up to the one before the width";
    EXPECT_EQ(row(3), "|ono") << "beyond them all stays";
    EXPECT_EQ(row(4), "|") << "blank for as many cells as the width, from column 1";
    EXPECT_EQ(screen.pair_at(window.get(), 2, 1), 5);
    EXPECT_EQ(screen.pair_at(window.get(), 3, 1), 7);
    EXPECT_NE(mvwinch(window.get(), 3, 1) & A_BOLD, 0U);
    EXPECT_EQ(mvwinch(window.get(), 3, 3) & A_BOLD, 0U);
}

} // namespace
