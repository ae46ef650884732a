// server_backlog_test.cpp - which messages a client does without when it cannot be sent them all.
#include "server/sessions/backlog.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace std::chrono_literals;

constexpr tovrik::time_point start{1000s};

tovrik::waiting_message message_of(const std::string& text, bool has_text,
                                   tovrik::time_point late_at = tovrik::never)
{
    return {std::make_shared<std::string>(text), has_text, late_at};
}

/// What is taken until nothing is left.
std::string taken_from(tovrik::backlog& waiting, tovrik::time_point now)
{
    std::string all;
    while (const auto bytes = backlog_take(waiting, now))
        all += *bytes;
    return all;
}

TEST(server_backlog, leaves_out_messages_without_a_text_first_and_then_the_oldest)
{
    tovrik::backlog waiting;
    const std::pair<const char*, bool> added[] = {{"a", true},  {"b", false}, {"c", true},
                                                  {"d", false}, {"e", true},  {"f", true}};
    for (const auto& [text, has_text] : added)
        backlog_add(waiting, message_of(text, has_text), 3);
    EXPECT_EQ(waiting.left_out, 3U);
    EXPECT_EQ(taken_from(waiting, start), "cef");
}

TEST(server_backlog, leaves_out_a_new_message_without_a_text_when_the_others_have_one)
{
    tovrik::backlog waiting;
    for (const char* text : {"a", "b"})
        backlog_add(waiting, message_of(text, true), 2);
    backlog_add(waiting, message_of("c", false), 2);
    EXPECT_EQ(taken_from(waiting, start), "ab");
    EXPECT_EQ(waiting.left_out, 1U);
}

TEST(server_backlog, leaves_out_what_has_waited_too_long)
{
    tovrik::backlog waiting;
    backlog_add(waiting, message_of("a", true, start), 9);
    backlog_add(waiting, message_of("b", true, start + 1ns), 9);
    backlog_add(waiting, message_of("c", true), 9);
    EXPECT_EQ(taken_from(waiting, start), "bc");
    EXPECT_EQ(waiting.left_out, 1U);
    EXPECT_EQ(backlog_take(waiting, start), nullptr);
}

} // namespace
