// web_directory_test.cpp - the directory that a server gives out, as the client reads it.
#include "web_sample_report.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"
#include "net/directory_lines.hpp"
#include "server/web/directory_page.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace
{

using owned_entry = std::unique_ptr<server_entry, releaser<server_entry_free>>;

/// What the client makes of a directory: one entry, or null, for each line.
std::vector<owned_entry> read_entries(std::string page)
{
    std::vector<owned_entry> entries;
    char* rest = page.data();
    while (char* line = directory_line_next(rest))
        entries.emplace_back(directory_entry_new(line));
    EXPECT_STREQ(rest, "") << "the last line has its line feed";
    return entries;
}

TEST(web_directory, has_a_line_of_nine_fields_for_each_server)
{
    EXPECT_EQ(tovrik::directory_page(sample_report(), "acars.example"),
              "acars.example\t2202\t\tBerlin\tall\t\tHome\t\t\n"
              "acars.example\t2203\t\tBerlin\tVDL2\t\tVDL2\t\t\n"
              "friend.example\t2204\t\t\t\t\tFriend\t\t\n");
}

TEST(web_directory, is_understood_by_the_client)
{
    const auto entries = read_entries(tovrik::directory_page(sample_report(), "192.0.2.7"));
    ASSERT_EQ(entries.size(), 3U);
    ASSERT_TRUE(entries[0] && entries[1] && entries[2]);
    EXPECT_STREQ(entries[0]->ServerName, "192.0.2.7");
    EXPECT_EQ(entries[0]->ServerPort, 2202);
    EXPECT_STREQ(entries[0]->Location, "Berlin");
    EXPECT_STREQ(entries[0]->Info, "all");
    EXPECT_STREQ(entries[0]->ServerAlias, "Home");
    EXPECT_STREQ(entries[1]->ServerName, "192.0.2.7");
    EXPECT_EQ(entries[1]->ServerPort, 2203);
    EXPECT_STREQ(entries[2]->ServerName, "friend.example");
    EXPECT_EQ(entries[2]->Location, nullptr);
}

TEST(web_directory, keeps_its_lines_and_fields_whatever_the_texts_are)
{
    for (const std::string text : hostile_texts) {
        const auto page = tovrik::directory_page(sample_report_of(text), "host");
        EXPECT_TRUE(std::ranges::none_of(page, [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return c == '<' || c == '>' || (byte >= 0x7F && byte < 0xA0) ||
                   (byte < 0x20 && c != '\t' && c != '\n');
        })) << text;
        const auto entries = read_entries(page);
        ASSERT_EQ(entries.size(), 3U) << text;
        for (const auto& entry : entries)
            EXPECT_TRUE(entry) << text;
    }
}

TEST(web_directory, leaves_out_a_server_whose_host_nobody_knows)
{
    EXPECT_EQ(tovrik::directory_page(sample_report(), ""),
              "friend.example\t2204\t\t\t\t\tFriend\t\t\n");
}

} // namespace
