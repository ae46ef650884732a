// template_test.cpp - filling the placeholders of a text from a document.
#include "data/template.hpp"
#include "unit/net_fixture.hpp"

#include "base/limits.hpp"

#include <algorithm>

namespace
{

std::string fill(const std::string& text, const std::string& elements)
{
    const xml_document document{xml_parse(transmission_xml(elements).c_str())};
    const heap_text result{fill_template(owned_text(text), document.get())};
    return result.get();
}

bool has_percent(const std::string& text)
{
    return text.find('%') != std::string::npos;
}

TEST(fill_template, replaces_placeholders_with_the_values_at_their_paths)
{
    const struct {
        const char* text;
        const char* elements;
        const char* result;
    } rows[] = {
        {"", "", ""},
        {"no placeholder", "<a>1</a>", "no placeholder"},
        {"%tovrik/a%", "<a>1</a>", "1"},
        {"[%tovrik/a%]-%tovrik/b%.", "<a>1</a><b>22</b>", "[1]-22."},
        {"%tovrik/a%%tovrik/a%", "<a>x</a>", "xx"},
        {"%tovrik/a/b%", "<a><b>deep</b></a><b>flat</b>", "deep"},
        // missing elements, empty ones, and names where paths are expected
        {"<%tovrik/a%>", "", "<>"},
        {"<%tovrik/a%>", "<a></a>", "<>"},
        {"<%a%>", "<a>1</a>", "<>"},
        {"%tovrik/From%-%tovrik/To%", "", "-"},
        {"%%", "", ""},
        // a "%" without a partner
        {"100%", "", "100#"},
        {"%tovrik/a%", "<a>50%</a>", "50#"},
        {"%tovrik/a% of it", "<a>50%</a>", "50# of it"},
        {"%tovrik/a%", "<a>%</a>", "#"},
        // a "%" in a value begins another placeholder with whatever follows
        {"%tovrik/a% and %tovrik/b%", "<a>50%</a><b>B</b>", "50tovrik/b#"},
        {"%tovrik/a%", "<a>%tovrik/b%</a><b>B</b>", "B"},
        {"%tovrik/a%", "<a>%tovrik/</a>", "#tovrik/"},
        {"%tovrik/a%b%", "<a>%tovrik/</a><b>B</b>", "B"},
        // all occurrences at once, including later ones
        {"%tovrik/a%, %tovrik/b%, %tovrik/a%", "<a>1</a><b>2</b>", "1, 2, 1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(fill(row.text, row.elements), row.result) << row.text << " of " << row.elements;
}

TEST(fill_template, works_without_a_document_and_without_a_text)
{
    const heap_text result{fill_template(owned_text("<%tovrik/a%>50%"), nullptr)};
    EXPECT_STREQ(result.get(), "<>50#");
    EXPECT_EQ(fill_template(nullptr, nullptr), nullptr);
}

TEST(fill_template, ends_on_a_value_that_names_itself)
{
    EXPECT_EQ(fill("%tovrik/a%", "<a>%tovrik/a%</a>"), "#tovrik/a#");
    const std::string grown = fill("%tovrik/a%", "<a>x%tovrik/a%</a>");
    EXPECT_FALSE(has_percent(grown));
    EXPECT_EQ(std::count(grown.begin(), grown.end(), 'x'), template_max_replacements);
}

TEST(fill_template, ends_on_values_that_name_each_other)
{
    const std::string result =
        fill("%tovrik/a%", "<a>%tovrik/b%</a><b>%tovrik/c%</b><c>%tovrik/a%</c>");
    EXPECT_FALSE(has_percent(result));
    EXPECT_EQ(result.size(), std::string{"#tovrik/a#"}.size());
}

TEST(fill_template, ends_on_a_value_that_doubles_itself)
{
    const std::string result = fill("%tovrik/a%", "<a>%tovrik/a%%tovrik/a%</a>");
    EXPECT_FALSE(has_percent(result));
    EXPECT_GT(result.size(), template_max_bytes / 2);
    EXPECT_LE(result.size(), template_max_bytes);
}

TEST(fill_template, makes_a_bounded_number_of_replacements)
{
    std::string text;
    for (int index = 0; index < template_max_replacements; ++index)
        text += "%tovrik/" + std::to_string(index) + "%";
    EXPECT_EQ(fill(text, ""), "");
    EXPECT_EQ(fill(text + "%tovrik/a%", "<a>1</a>"), "#tovrik/a#");
    EXPECT_EQ(fill(text + "50% and %tovrik/a%", "<a>1</a>"), "50# and #tovrik/a#");
}

TEST(fill_template, fills_texts_up_to_a_bounded_length)
{
    const std::string placeholder = "%tovrik/a%";
    const std::string longest(template_max_bytes - 1, '.');
    EXPECT_EQ(fill(longest + placeholder, "<a>1</a>"), longest + "1");
    EXPECT_EQ(fill(longest + placeholder, "<a>12</a>"), longest + "#tovrik/a#");
    EXPECT_EQ(fill(placeholder + longest + placeholder, ""), longest);
}

/// Placeholders of different values, all of them "v" below the root.
std::string make_placeholders(std::size_t count)
{
    std::string text;
    for (std::size_t number = 1; number <= count; ++number)
        text += "%tovrik/a" + std::to_string(number) + "%";
    return text;
}

std::string make_values(std::size_t count)
{
    std::string elements;
    for (std::size_t number = 1; number <= count; ++number)
        elements.append("<a").append(std::to_string(number)).append(">v</a>");
    return elements;
}

TEST(fill_template, looks_up_fewer_values_in_a_very_large_document)
{
    constexpr std::size_t count = 10;
    std::string elements = make_values(count);
    for (int number = 0; number < 40'000; ++number)
        elements += "<b></b>";
    const std::string result = fill(make_placeholders(count), elements);
    const std::size_t nodes = 40'000 + count + 3; // with the declaration, the root and the last one
    const std::size_t filled = template_max_visited_nodes / nodes;
    ASSERT_LT(filled, count);
    EXPECT_EQ(result.substr(0, filled + 1), std::string(filled, 'v') + '#');
    EXPECT_EQ(std::count(result.begin(), result.end(), '#'), 2 * (count - filled));
    EXPECT_FALSE(has_percent(result));
}

TEST(fill_template, looks_up_fewer_long_paths)
{
    std::string elements;
    for (int number = 0; number < 5'000; ++number)
        elements += "<b></b>";
    const std::string path(12 * template_bytes_of_a_visit, 'p');
    std::string text;
    for (const char letter : {'1', '2', '3', '4'})
        text += '%' + path + letter + '%';
    // Each counts 13 times 5,003 nodes.
    EXPECT_EQ(fill(text + "%tovrik/a%", elements), '#' + path + "3##" + path + "4##tovrik/a#");
    EXPECT_EQ(fill(text.substr(0, text.size() / 2) + "%tovrik/a%", elements), "#tovrik/a#");
}

TEST(fill_template, looks_through_a_long_text_for_fewer_placeholders)
{
    constexpr std::size_t count = 100;
    const std::string text = make_placeholders(count) + std::string(50'000, '.');
    const std::string result = fill(text, make_values(count));
    std::size_t filled = 0;
    std::size_t searched = 0;
    for (std::size_t start = 0; searched + text.size() - start <= template_max_searched_bytes;
         start = text.find('%', text.find('%', start) + 1) + 1, ++filled)
        searched += text.size() - start;
    ASSERT_LT(filled, count);
    EXPECT_EQ(result.substr(0, filled + 1), std::string(filled, 'v') + '#');
    EXPECT_EQ(std::count(result.begin(), result.end(), '#'), 2 * (count - filled));
    EXPECT_FALSE(has_percent(result));
}

TEST(fill_template, makes_no_long_text_of_a_short_one)
{
    // A value of 511 bytes in a text that names it as often as its bound allows.
    std::string text;
    for (int count = 0; count < 500; ++count)
        text += "%tovrik/a%";
    const std::string value(511, 'x');
    const std::string result = fill(text, "<a>" + value + "</a>");
    EXPECT_FALSE(has_percent(result));
    EXPECT_LE(result.size(), template_max_bytes);
}

} // namespace
