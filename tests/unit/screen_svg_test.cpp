// screen_svg_test.cpp - pictures of screens show what the terminal shows, and are XML.
#include "support/screen_svg.hpp"
#include "support/svg_parts.hpp"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{

std::string draw_picture(std::string_view output, int rows = 3, int columns = 12)
{
    terminal_screen screen{rows, columns, true};
    screen.feed(output);
    return screen_svg(screen, "a title");
}

bool has_part(const std::string& picture, const std::string& part)
{
    return picture.find(part) != std::string::npos;
}

/// The start tag of the element that contains `text`, without its end; empty if there is none.
std::string find_text_element(const std::string& picture, const std::string& text)
{
    const auto end = picture.find('>' + text + "</text>");
    if (end == std::string::npos)
        return {};
    const auto begin = picture.rfind("<text", end);
    return picture.substr(begin, end - begin);
}

TEST(screen_svg, tells_its_title_and_size)
{
    const std::string picture = draw_picture("");
    EXPECT_TRUE(has_part(picture, "<title>a title</title>"));
    EXPECT_TRUE(has_part(picture, "<desc>3 rows of 12 columns</desc>"));
    EXPECT_TRUE(has_part(picture, " width=\"128\" height=\"104\" viewBox=\"0 0 128 104\""));
    EXPECT_EQ(screen_svg_width(12), 128);
    EXPECT_EQ(screen_svg_height(3), 104);
}

TEST(screen_svg, escapes_markup_characters)
{
    EXPECT_TRUE(has_part(draw_picture("a<b>&\"c'"), ">a&lt;b&gt;&amp;&quot;c'</text>"));
    const terminal_screen screen{1, 1, true};
    EXPECT_TRUE(has_part(screen_svg(screen, "<&"), "<title>&lt;&amp;</title>"));
}

TEST(screen_svg, puts_each_run_of_a_style_on_its_cells)
{
    const std::string picture = draw_picture("ab\033[31mcd e\033[0m\r\n  f");
    EXPECT_EQ(find_text_element(picture, "ab"),
              "<text x=\"10\" y=\"54\" fill=\"#c3c9d2\" textLength=\"18\"");
    EXPECT_EQ(find_text_element(picture, "cd e"),
              "<text x=\"28\" y=\"54\" fill=\"#d9646c\" textLength=\"36\"");
    EXPECT_EQ(find_text_element(picture, "f"),
              "<text x=\"28\" y=\"72\" fill=\"#c3c9d2\" textLength=\"9\"");
}

TEST(screen_svg, breaks_runs_at_two_blanks)
{
    const std::string picture = draw_picture("a b  c");
    EXPECT_NE(find_text_element(picture, "a b"), "");
    EXPECT_TRUE(find_text_element(picture, "c").starts_with("<text x=\"55\""));
}

TEST(screen_svg, gives_every_colour_its_own_shades)
{
    std::set<std::string> seen;
    for (int colour = 0; colour < 8; ++colour) {
        for (const char* bold : {"", "1;"}) {
            const std::string picture =
                draw_picture("\033[" + std::string{bold} + "3" + std::to_string(colour) + "mX");
            seen.insert(find_text_element(picture, "X"));
        }
    }
    EXPECT_EQ(seen.size(), 16U);
    EXPECT_FALSE(seen.contains(""));
}

TEST(screen_svg, draws_bold_text_heavy_and_bright)
{
    EXPECT_EQ(find_text_element(draw_picture("\033[1;34mX"), "X"),
              "<text x=\"10\" y=\"54\" fill=\"#86b9ff\" font-weight=\"bold\" textLength=\"9\"");
    EXPECT_EQ(find_text_element(draw_picture("\033[94mX"), "X"),
              "<text x=\"10\" y=\"54\" fill=\"#86b9ff\" textLength=\"9\"");
}

TEST(screen_svg, underlines_blanks_too)
{
    EXPECT_TRUE(has_part(find_text_element(draw_picture("\033[4ma  b"), "a  b"),
                         " text-decoration=\"underline\""));
}

TEST(screen_svg, paints_backgrounds_that_are_not_the_windows)
{
    const std::string rectangle =
        "<rect x=\"19\" y=\"40\" width=\"18\" height=\"18\" fill=\"#254a80\"/>";
    EXPECT_TRUE(has_part(draw_picture("a\033[37;44mb \033[0mc"), rectangle));
    EXPECT_FALSE(has_part(draw_picture("a\033[37;40mb \033[0mc"), "<rect x=\"19\""));
}

TEST(screen_svg, exchanges_the_colours_of_reversed_cells)
{
    const std::string picture = draw_picture("\033[31;44;7mX");
    EXPECT_TRUE(has_part(find_text_element(picture, "X"), "fill=\"#254a80\""));
    EXPECT_TRUE(has_part(picture, " height=\"18\" fill=\"#d9646c\"/>"));
}

TEST(screen_svg, counts_the_colours_beyond_sixteen_as_default)
{
    EXPECT_EQ(draw_picture("\033[38;5;200;48;5;16mX"), draw_picture("X"));
}

TEST(screen_svg, draws_box_characters_as_lines_that_meet)
{
    const std::string picture = draw_picture("\033[34m┌─\r\n│x");
    EXPECT_TRUE(has_part(picture, "<path stroke=\"#5a8fd6\" d=\"M14 49h5M14 49v9M19 49h9\"/>"));
    EXPECT_TRUE(has_part(picture, "<path stroke=\"#5a8fd6\" d=\"M14 58v18\"/>"));
    EXPECT_NE(find_text_element(picture, "x"), "");
    EXPECT_FALSE(has_part(picture, "┌"));
}

TEST(screen_svg, knows_every_box_character_of_single_lines)
{
    std::set<std::string> seen;
    for (const char* text : {"─", "│", "┌", "┐", "└", "┘", "├", "┤", "┬", "┴", "┼"}) {
        EXPECT_TRUE(is_box_character(text)) << text;
        seen.insert(box_strokes(text, 0, 0));
    }
    EXPECT_EQ(seen.size(), 11U);
    EXPECT_FALSE(is_box_character("x"));
    EXPECT_EQ(box_strokes("x", 0, 0), "");
}

TEST(screen_svg, counts_wide_characters_as_two_cells)
{
    EXPECT_TRUE(has_part(find_text_element(draw_picture("日"), "日"), "textLength=\"18\""));
}

TEST(screen_svg, gives_the_same_bytes_for_the_same_screen)
{
    const std::string_view output = "\033[1;33ma\033[0m ┼ \033[44mb";
    EXPECT_EQ(draw_picture(output), draw_picture(output));
}

} // namespace
