// inputs_joining_test.cpp - messages that come in blocks.
#include "server/inputs/joining.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using std::chrono::seconds;
using tovrik::transmission;

constexpr tovrik::time_point start{std::chrono::hours{1}};

/// A block of a message; `more` says that another one follows.
transmission block(const char* id, const char* number, const char* text, bool more)
{
    return {.registration = "D-AIBC",
            .label = "H1",
            .block_id = id,
            .message_number = number,
            .content = text,
            .heard = {.continues = more}};
}

std::string texts_of(const std::vector<transmission>& messages)
{
    std::string texts;
    for (const auto& message : messages)
        texts += message.content + (message.heard.continues ? "... " : ". ");
    return texts;
}

struct joining_row {
    const char* what;
    std::vector<transmission> blocks; ///< one second apart
    const char* passed;               ///< at once
    const char* released = "";        ///< after the wait
};

TEST(inputs_joining, follows_ids_and_numbers)
{
    auto other_link = block("8", "M07B", "b", false);
    other_link.heard.link = tovrik::message_link::hfdl;
    auto other_label = block("8", "M07B", "b", false);
    other_label.label = "H2";
    auto nobody = block("7", "M07A", "a", true);
    nobody.registration = "";
    const joining_row rows[] = {
        {"a whole message", {block("7", "M07A", "a", false)}, "a. "},
        {"two blocks", {block("7", "M07A", "a", true), block("8", "M07B", "b", false)}, "ab. "},
        {"ids go round",
         {block("9", "M07A", "a", true), block("0", "M07B", "b", true),
          block("1", "M07C", "c", false)},
         "abc. "},
        {"numbers without a letter",
         {block("7", "M07", "a", true), block("8", "M07", "b", false)},
         "ab. "},
        {"from the ground",
         {block("Y", "", "a", true), block("Z", "", "b", true), block("A", "", "c", false)},
         "abc. "},
        {"one block is missing",
         {block("7", "M07A", "a", true), block("9", "M07C", "c", false)},
         "a... c. "},
        {"one block is missing, and more follow",
         {block("7", "M07A", "a", true), block("9", "M07C", "c", true),
          block("0", "M07D", "d", false)},
         "a... cd. "},
        {"the next id, but not the next letter",
         {block("7", "M07A", "a", true), block("8", "M07C", "c", false)},
         "a... c. "},
        {"the first block is missing", {block("8", "M07B", "b", false)}, "b. "},
        {"the last block is missing",
         {block("7", "M07A", "a", true), block("8", "M07B", "b", true)},
         "",
         "ab... "},
        {"another message in between",
         {block("7", "M07A", "a", true), block("8", "M08A", "x", false),
          block("8", "M07B", "b", false)},
         "x. ab. "},
        {"a block that comes again",
         {block("7", "M07A", "a", true), block("7", "M07A", "a", true),
          block("8", "M07B", "b", false)},
         "ab. "},
        {"a new message with the ids of the old one",
         {block("7", "M07A", "a", true), block("7", "M07A", "x", false)},
         "a... x. "},
        {"another link", {block("7", "M07A", "a", true), other_link}, "b. ", "a... "},
        {"another label", {block("7", "M07A", "a", true), other_label}, "b. ", "a... "},
        {"an answer from the ground",
         {block("7", "M07A", "a", true), block("B", "M07B", "b", false)},
         "b. ",
         "a... "},
        {"nobody's blocks", {nobody, nobody}, "a... a... "},
        {"no id", {block("", "M07A", "a", true)}, "a... "},
        {"an id that is none", {block("?", "M07A", "a", true)}, "a... "},
        {"two ids", {block("78", "M07A", "a", true)}, "a... "},
        {"letters end with Z",
         {block("7", "M07Z", "a", true), block("8", "M07A", "b", false)},
         "a... b. "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        tovrik::joining state;
        std::string passed;
        auto now = start;
        for (const auto& each : row.blocks)
            passed += texts_of(joining_take(state, {each}, now += seconds{1}));
        EXPECT_EQ(passed, row.passed);
        EXPECT_EQ(texts_of(joining_on_time(state, now + tovrik::join_patience)), row.released);
        EXPECT_EQ(joining_next_time(state), tovrik::never);
    }
}

TEST(inputs_joining, keeps_the_first_block_but_for_the_text)
{
    tovrik::joining state;
    auto first = block("7", "M07A", "a\n", true);
    first.time = 77;
    first.heard.level_db = -30;
    const auto passed = joining_take(state, {first, block("8", "M07B", "b", false)}, start);
    ASSERT_EQ(passed.size(), 1U);
    EXPECT_EQ(passed[0].content, "a\nb");
    EXPECT_EQ(passed[0].message_number, "M07A");
    EXPECT_EQ(passed[0].block_id, "7");
    EXPECT_EQ(passed[0].time, 77);
    EXPECT_EQ(passed[0].heard.level_db, -30);
    EXPECT_EQ(state.joined, 1U);
}

TEST(inputs_joining, waits_30_seconds_for_each_block)
{
    tovrik::joining state;
    EXPECT_TRUE(joining_take(state, {block("7", "M07A", "a", true)}, start).empty());
    EXPECT_EQ(joining_next_time(state), start + seconds{30});
    EXPECT_TRUE(joining_on_time(state, start + seconds{29}).empty());
    EXPECT_TRUE(joining_take(state, {block("8", "M07B", "b", true)}, start + seconds{29}).empty());
    EXPECT_EQ(joining_next_time(state), start + seconds{59});
    EXPECT_EQ(texts_of(joining_take(state, {block("9", "M07C", "c", false)}, start + seconds{59})),
              "ab... c. ");
}

TEST(inputs_joining, passes_all_on_at_the_end)
{
    tovrik::joining state;
    joining_take(state, {block("7", "M07A", "a", true), block("7", "M08A", "b", true)}, start);
    EXPECT_EQ(texts_of(joining_end(state)), "a... b... ");
    EXPECT_TRUE(state.waiting.empty());
}

TEST(inputs_joining, is_bounded_in_messages_and_in_their_length)
{
    tovrik::joining state;
    std::size_t passed = 0;
    for (std::size_t i = 0; i < tovrik::max_unfinished_messages + 5; ++i) {
        auto each = block("7", "M07A", "a", true);
        each.registration = std::to_string(i);
        passed += joining_take(state, {each}, start).size();
    }
    EXPECT_EQ(passed, 5U);
    EXPECT_EQ(state.waiting.size(), tovrik::max_unfinished_messages);

    tovrik::joining endless;
    const std::string text(1000, 'x');
    for (int i = 0; i < 500; ++i) {
        const std::string id(1, static_cast<char>('0' + i % 10));
        for (const auto& each :
             joining_take(endless, {block(id.c_str(), "M07", text.c_str(), true)}, start)) {
            EXPECT_LE(each.content.size(), tovrik::max_joined_bytes);
            EXPECT_GT(each.content.size(), tovrik::max_joined_bytes - text.size());
        }
    }
    EXPECT_EQ(endless.waiting.size(), 1U);
}

} // namespace
