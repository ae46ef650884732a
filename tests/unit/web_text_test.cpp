// web_text_test.cpp - texts, numbers and times as the web shows them.
#include "server/web/web_text.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace
{

using namespace tovrik;

TEST(web_text, of_a_page_is_utf_8_without_markup_and_controls)
{
    EXPECT_EQ(web_html("<a href=\"x\" title='y'>&amp;</a>"),
              "&lt;a href=&quot;x&quot; title=&#39;y&#39;&gt;&amp;amp;&lt;/a&gt;");
    EXPECT_EQ(web_html("a\tb\r\nc\x1B\x7F\x80\x9F\xA0\xFC\xFF"),
              "a b  c    \xC2\xA0\xC3\xBC\xC3\xBF");
    EXPECT_EQ(web_html(std::string_view{"a\0b", 3}), "a b");
}

TEST(web_text, of_a_label_ends_neither_the_label_nor_the_line)
{
    EXPECT_EQ(web_label("a\\b\"c\nd\xFC{}<>"), "a\\\\b\\\"c d\xC3\xBC{}<>");
}

TEST(web_text, of_a_field_is_what_the_client_reads)
{
    EXPECT_EQ(web_field("a<b>c\td\ne\x80\xA0\xFF&\""), "a b c d e \xA0\xFF&\"");
}

TEST(web_text, groups_the_digits_of_numbers)
{
    const std::pair<std::uint64_t, const char*> rows[] = {
        {0, "0"},
        {999, "999"},
        {1000, "1,000"},
        {18402, "18,402"},
        {123456, "123,456"},
        {1234567, "1,234,567"},
        {std::numeric_limits<std::uint64_t>::max(), "18,446,744,073,709,551,615"},
    };
    for (const auto& [number, text] : rows)
        EXPECT_EQ(web_number(number), text);
}

TEST(web_text, shortens_numbers_for_narrow_places)
{
    const std::pair<std::uint64_t, const char*> rows[] = {
        {0, "0"},          {99999, "99,999"},
        {100000, "100k"},  {9999999, "9,999k"},
        {10000000, "10M"}, {std::numeric_limits<std::uint64_t>::max(), "18E"},
    };
    for (const auto& [number, text] : rows)
        EXPECT_EQ(web_short_number(number), text);
}

TEST(web_text, tells_time_spans_in_their_largest_units)
{
    struct row {
        std::time_t seconds;
        int units;
        const char* text;
    };
    const row rows[] = {
        {-5, 1, "0 seconds"},
        {0, 2, "0 seconds"},
        {1, 1, "1 second"},
        {59, 1, "59 seconds"},
        {60, 1, "1 minute"},
        {187, 1, "3 minutes"},
        {187, 2, "3 minutes 7 seconds"},
        {7200, 2, "2 hours"},
        {86399, 1, "23 hours"},
        {12 * 86400 + 4 * 3600 + 77, 2, "12 days 4 hours"},
        {86400 + 59, 2, "1 day"},
        {2000 * 86400L, 1, "2,000 days"},
    };
    for (const auto& [seconds, units, text] : rows)
        EXPECT_EQ(web_duration(seconds, units), text) << seconds;
}

TEST(web_text, tells_times_in_utc_of_years_with_four_digits)
{
    EXPECT_EQ(web_utc(1767609012, "%Y-%m-%d %H:%M:%S"), "2026-01-05 10:30:12");
    EXPECT_EQ(web_utc(0, "%Y"), "1970");
    for (const std::time_t time :
         {std::numeric_limits<std::time_t>::max(), std::numeric_limits<std::time_t>::min()})
        EXPECT_EQ(web_utc(time, "%Y"), "?");
}

} // namespace
