// server_box_test.cpp - the user's patience with the boxes of servers, and their names.
#include "net/server_box.hpp"

#include <gtest/gtest.h>
#include <string>

namespace
{

class patience : public testing::Test
{
protected:
    void close_box(bool was_answered, std::time_t now)
    {
        server_box_closed(entry, was_answered, now);
    }

    server_entry entry = {};
};

TEST_F(patience, has_an_end_after_two_boxes_in_a_row)
{
    EXPECT_TRUE(server_box_may_open(entry, 0));
    close_box(false, 1'000);
    EXPECT_TRUE(server_box_may_open(entry, 1'000));
    close_box(false, 1'020);
    EXPECT_FALSE(server_box_may_open(entry, 1'020));
}

TEST_F(patience, is_restored_by_an_answer_and_by_a_wish_of_the_user)
{
    close_box(false, 1'000);
    close_box(true, 1'010);
    close_box(false, 1'020);
    EXPECT_TRUE(server_box_may_open(entry, 1'020));
    close_box(false, 1'030);
    EXPECT_FALSE(server_box_may_open(entry, 1'030));
    server_box_expect(entry);
    EXPECT_TRUE(server_box_may_open(entry, 1'030));
    close_box(false, 1'040);
    EXPECT_TRUE(server_box_may_open(entry, 1'040));
}

TEST_F(patience, allows_one_box_after_each_minute)
{
    close_box(false, 1'000);
    close_box(false, 1'020);
    EXPECT_FALSE(server_box_may_open(entry, 1'079));
    EXPECT_TRUE(server_box_may_open(entry, 1'080));
    close_box(false, 1'090);
    EXPECT_FALSE(server_box_may_open(entry, 1'149));
    EXPECT_TRUE(server_box_may_open(entry, 1'150));
}

TEST_F(patience, waits_no_longer_than_a_minute_if_the_clock_is_set_back)
{
    close_box(false, 1'000'000);
    close_box(false, 1'000'020);
    EXPECT_FALSE(server_box_may_open(entry, 500));
    EXPECT_FALSE(server_box_may_open(entry, 559));
    EXPECT_TRUE(server_box_may_open(entry, 560));
}

TEST(box_name, is_the_alias_or_the_host_without_blanks_around_it)
{
    const struct {
        const char* alias;
        const char* name;
    } rows[] = {
        {nullptr, "host.example"},
        {"", "host.example"},
        {" \t\xA0\n", "host.example"},
        {"alpha", "alpha"},
        {"  the first  one\xA0 ", "the first  one"},
        {"\x9B\x1B\x7F!\x01", "!"},
        {"\xE9t\xE9", "\xE9t\xE9"},
    };
    char host[] = "host.example";
    for (const auto& row : rows) {
        std::string alias = row.alias != nullptr ? row.alias : "";
        server_entry entry = {};
        entry.ServerName = host;
        entry.ServerAlias = row.alias != nullptr ? alias.data() : nullptr;
        EXPECT_EQ(server_box_name(entry), row.name);
    }
}

} // namespace
