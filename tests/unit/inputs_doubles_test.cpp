// inputs_doubles_test.cpp - messages that several receivers heard.
#include "server/inputs/doubles.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;
using tovrik::transmission;

constexpr tovrik::time_point start{std::chrono::hours{1}};

transmission heard_at(double level_db, const std::string& text = "HELLO")
{
    return {.registration = "D-AIBC",
            .label = "H1",
            .block_id = "7",
            .message_number = "M06A",
            .content = text,
            .heard = {.level_db = level_db}};
}

std::string levels_of(const std::vector<transmission>& messages)
{
    std::string levels;
    for (const auto& message : messages)
        levels += std::to_string(static_cast<int>(message.heard.level_db)) + " ";
    return levels;
}

TEST(inputs_doubles, become_the_strongest_after_a_pause)
{
    tovrik::doubles known;
    EXPECT_EQ(doubles_take(known, {heard_at(-30), heard_at(-10)}, true, start).size(), 0U);
    EXPECT_EQ(doubles_take(known, {heard_at(-20)}, true, start + milliseconds{1999}).size(), 0U);
    EXPECT_EQ(doubles_next_time(known), start + seconds{2});
    EXPECT_EQ(levels_of(doubles_on_time(known, start + seconds{2})), "-10 ");
    EXPECT_EQ(known.merged, 2U);
    EXPECT_EQ(doubles_next_time(known), tovrik::never);
    EXPECT_EQ(doubles_on_time(known, start + seconds{3}).size(), 0U);
}

TEST(inputs_doubles, are_dropped_for_eight_seconds_after_the_first)
{
    tovrik::doubles known;
    doubles_take(known, {heard_at(-30)}, true, start);
    EXPECT_EQ(levels_of(doubles_take(known, {heard_at(-1)}, true, start + seconds{2})), "-30 ")
        << "the first one is due, and the stronger one too late";
    EXPECT_EQ(doubles_take(known, {heard_at(-1)}, true, start + milliseconds{7999}).size(), 0U);
    EXPECT_EQ(doubles_next_time(known), tovrik::never);
    EXPECT_EQ(known.merged, 2U);
    doubles_take(known, {heard_at(-40)}, true, start + seconds{8});
    EXPECT_EQ(levels_of(doubles_on_time(known, start + seconds{10})), "-40 ");
}

TEST(inputs_doubles, of_one_input_are_dropped_without_a_pause)
{
    tovrik::doubles known;
    EXPECT_EQ(levels_of(doubles_take(known, {heard_at(-30), heard_at(-10)}, false, start)), "-30 ");
    EXPECT_EQ(doubles_next_time(known), tovrik::never);
    EXPECT_EQ(known.merged, 1U);
    EXPECT_EQ(doubles_take(known, {heard_at(-10)}, false, start + seconds{7}).size(), 0U);
    EXPECT_EQ(doubles_take(known, {heard_at(-10)}, false, start + seconds{8}).size(), 1U);
}

TEST(inputs_doubles, without_a_level_are_the_weakest)
{
    tovrik::doubles known;
    doubles_take(known, {heard_at(-999), heard_at(-90), heard_at(-999)}, true, start);
    EXPECT_EQ(levels_of(doubles_on_time(known, start + seconds{2})), "-90 ");
}

TEST(inputs_doubles, are_the_same_in_five_things)
{
    std::vector<transmission> different(6, heard_at(-1));
    different[1].registration = "D-AIBD";
    different[2].label = "H2";
    different[3].block_id = "8";
    different[4].message_number = "M06B";
    different[5].content = "HELLO!";
    tovrik::doubles known;
    EXPECT_EQ(doubles_take(known, different, false, start).size(), different.size());
    std::vector<transmission> same(5, heard_at(-1));
    same[0].content = "HELLO\n";
    same[1].content = "HELLO  ";
    same[2].time = 77;
    same[3].heard.station = "other";
    same[4].flight_number = "LH0400";
    EXPECT_EQ(doubles_take(known, same, false, start).size(), 0U);
    EXPECT_EQ(known.merged, same.size());
}

TEST(inputs_doubles, do_not_run_one_field_into_the_next)
{
    tovrik::doubles known;
    EXPECT_EQ(doubles_take(known,
                           {{.label = "AB", .block_id = "C"}, {.label = "A", .block_id = "BC"}},
                           false, start)
                  .size(),
              2U);
}

TEST(inputs_doubles, keep_their_order_and_pass_all_on_at_the_end)
{
    tovrik::doubles known;
    doubles_take(known, {heard_at(-1, "a"), heard_at(-2, "b")}, true, start);
    doubles_take(known, {heard_at(-3, "c")}, true, start + seconds{1});
    EXPECT_EQ(levels_of(doubles_on_time(known, start + seconds{2})), "-1 -2 ");
    EXPECT_EQ(levels_of(doubles_end(known)), "-3 ");
    EXPECT_TRUE(known.remembered.empty());
    EXPECT_TRUE(known.places.empty());
    EXPECT_EQ(doubles_take(known, {heard_at(-1, "a")}, false, start + seconds{2}).size(), 1U);
}

TEST(inputs_doubles, wait_no_longer_when_there_are_no_others_any_more)
{
    tovrik::doubles known;
    doubles_take(known, {heard_at(-1, "a")}, true, start);
    EXPECT_EQ(levels_of(doubles_take(known, {heard_at(-2, "b")}, false, start + seconds{1})),
              "-2 ");
    EXPECT_EQ(doubles_next_time(known), start + seconds{2});
    EXPECT_EQ(levels_of(doubles_on_time(known, start + seconds{2})), "-1 ");
}

TEST(inputs_doubles, are_remembered_within_bounds_and_never_lost)
{
    tovrik::doubles known;
    std::size_t passed = 0;
    const std::size_t count = tovrik::max_remembered_messages + 10;
    for (std::size_t i = 0; i < count; ++i)
        passed += doubles_take(known, {heard_at(-1, std::to_string(i))}, true, start).size();
    EXPECT_EQ(passed, 10U) << "the oldest are passed on early";
    EXPECT_EQ(known.remembered.size(), tovrik::max_remembered_messages);
    EXPECT_EQ(known.places.size(), tovrik::max_remembered_messages);
    EXPECT_EQ(passed + doubles_end(known).size(), count);
    EXPECT_EQ(known.remembered_bytes, 0U);

    const std::size_t large = tovrik::max_remembered_bytes / 4;
    passed = 0;
    for (const char c : {'a', 'b', 'c', 'd', 'e'}) {
        passed += doubles_take(known, {heard_at(-1, std::string(large, c))}, true, start).size();
        EXPECT_LE(known.remembered_bytes, tovrik::max_remembered_bytes);
    }
    EXPECT_EQ(passed + doubles_end(known).size(), 5U);
}

} // namespace
