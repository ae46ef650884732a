// directory_lines_test.cpp - the directory's answer: its header, its lines, their fields.
#include "net/directory_lines.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace
{

using owned_entry = std::unique_ptr<server_entry, releaser<server_entry_free>>;

owned_entry parse_entry(std::string line)
{
    return owned_entry{directory_entry_new(line.data())};
}

std::optional<std::string> text_of(const char* text)
{
    return text != nullptr ? std::optional<std::string>{text} : std::nullopt;
}

std::vector<std::string> split_lines(std::string text)
{
    std::vector<std::string> lines;
    char* rest = text.data();
    while (const char* line = directory_line_next(rest))
        lines.emplace_back(line);
    return lines;
}

TEST(directory_lines, the_list_begins_after_the_first_empty_line)
{
    const std::pair<const char*, const char*> rows[] = {
        {"HTTP/1.0 200 OK\r\n\r\nlist", "list"},
        {"HTTP/1.0 200 OK\r\nA: b\r\n\r\none\r\n\r\ntwo", "one\r\n\r\ntwo"},
        {"\r\n\r\n", ""},
        {"x\r\n\r\n\r\n\r\ny", "\r\n\r\ny"},
    };
    for (const auto& [answer, list] : rows) {
        std::string response = answer;
        EXPECT_STREQ(directory_body(response.data()), list);
    }
}

TEST(directory_lines, there_is_no_list_without_an_empty_line)
{
    for (const char* answer :
         {"", "HTTP/1.0 200 OK", "a\n\nb", "a\r\n\n\rb", "a\r\n\r", "\r\n", "a\r\r\n\nb"}) {
        std::string response = answer;
        EXPECT_EQ(directory_body(response.data()), nullptr) << answer;
    }
}

TEST(directory_lines, lines_end_in_a_line_feed)
{
    using lines = std::vector<std::string>;
    EXPECT_EQ(split_lines(""), lines{});
    EXPECT_EQ(split_lines("no end"), lines{});
    EXPECT_EQ(split_lines("one\n"), lines{"one"});
    EXPECT_EQ(split_lines("one\ntwo\nrest"), (lines{"one", "two"}));
    EXPECT_EQ(split_lines("\n\nx\r\n"), (lines{"", "", "x\r"}));
}

TEST(directory_lines, fields_fill_an_entry)
{
    const owned_entry entry = parse_entry("host\t2300\tc\tplace\tfacts\tf\talias\th\ti");
    ASSERT_TRUE(entry);
    EXPECT_STREQ(entry->ServerName, "host");
    EXPECT_EQ(entry->ServerPort, 2300);
    EXPECT_STREQ(entry->Location, "place");
    EXPECT_STREQ(entry->Info, "facts");
    EXPECT_STREQ(entry->ServerAlias, "alias");
    EXPECT_EQ(entry->Password, nullptr);
    EXPECT_EQ(entry->SubCode, nullptr);
    EXPECT_EQ(entry->UseEMail, nullptr);
    EXPECT_EQ(entry->socket_fd, 0);
    EXPECT_EQ(entry->log_file, nullptr);
}

TEST(directory_lines, empty_fields_are_absent_texts)
{
    const owned_entry entry = parse_entry("\t\t\t\t\t\t\t\t");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->ServerName, nullptr) << "such an entry is refused by the list";
    EXPECT_EQ(entry->ServerPort, DEFAULT_SERVER_PORT);
    EXPECT_EQ(text_of(entry->Location), std::nullopt);
    EXPECT_EQ(text_of(entry->Info), std::nullopt);
    EXPECT_EQ(text_of(entry->ServerAlias), std::nullopt);
}

TEST(directory_lines, markup_and_control_characters_become_blanks)
{
    const std::string text = "a<b>c\x01\x1F\r\x7F\x80\x9F\xA0\xFF&\"'";
    const owned_entry entry =
        parse_entry(text + "\t1\t\t" + text + "\t" + text + "\t\t" + text + "\t\t");
    ASSERT_TRUE(entry);
    for (const char* taken : {entry->ServerName, entry->Location, entry->Info, entry->ServerAlias})
        EXPECT_STREQ(taken, "a b c      \xA0\xFF&\"'");
}

TEST(directory_lines, only_nine_fields_make_an_entry)
{
    std::string line = "host";
    for (int count = 1; count <= 12; ++count) {
        EXPECT_EQ(parse_entry(line) != nullptr, count == 9) << count << " fields";
        line += "\tx";
    }
    EXPECT_EQ(parse_entry(""), nullptr);
    EXPECT_EQ(parse_entry("a b c d e f g h i"), nullptr);
    EXPECT_EQ(parse_entry("a,b,c,d,e,f,g,h,i"), nullptr);
}

TEST(directory_lines, ports_are_numbers_other_than_0)
{
    const std::pair<const char*, std::int32_t> rows[] = {
        {"2300", 2300},
        {"0", 2202},
        {"x", 2202},
        {"", 2202},
        {"12x", 12},
        {" 7", 7},
        {"0x10", 2202},
        {"-3", -3},
        {"99999", 99999},
        {"99999999999999999999", std::numeric_limits<std::int32_t>::max()},
        {"-99999999999999999999", std::numeric_limits<std::int32_t>::min()},
    };
    for (const auto& [field, port] : rows) {
        const owned_entry entry = parse_entry("host\t" + std::string{field} + "\t\t\t\t\t\t\t");
        ASSERT_TRUE(entry) << field;
        EXPECT_EQ(entry->ServerPort, port) << field;
    }
}

TEST(directory_lines, a_long_line_is_a_line)
{
    const std::string info(1'000'000, 'i');
    const owned_entry entry = parse_entry("host\t1\t\t\t" + info + "\t\t\t\t");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->Info, info);
    EXPECT_EQ(parse_entry(std::string(1'000'000, '\t')), nullptr);
}

} // namespace
