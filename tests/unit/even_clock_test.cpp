// even_clock_test.cpp - when the wall clock is believed.
#include "server/base/even_clock.hpp"

#include <gtest/gtest.h>

namespace
{

using namespace std::chrono_literals;
using tovrik::even_clock_look;

constexpr tovrik::time_point start{1000s};
constexpr std::time_t noon = 1767700800;

TEST(even_clock, is_even_since_it_was_first_looked_at)
{
    tovrik::even_clock clock;
    EXPECT_FALSE(even_clock_look(clock, start, noon));
    EXPECT_TRUE(even_clock_look(clock, start + 60s, noon + 60));
    EXPECT_TRUE(even_clock_look(clock, start + 120s, noon + 124)) << "it may run a little fast";
    EXPECT_TRUE(even_clock_look(clock, start + 180s, noon + 180)) << "or slow";
    EXPECT_EQ(clock.even_since, start);
}

TEST(even_clock, begins_anew_after_each_jump)
{
    tovrik::even_clock clock;
    even_clock_look(clock, start, noon);
    for (const std::time_t jump : {std::time_t{60}, std::time_t{-60}, std::time_t{40'000'000'000},
                                   std::time_t{-40'000'000'000}}) {
        const auto now = clock.seen + 10s;
        EXPECT_FALSE(even_clock_look(clock, now, clock.shown + 10 + jump)) << jump;
        EXPECT_EQ(clock.even_since, now);
        EXPECT_TRUE(even_clock_look(clock, now + 10s, clock.shown + 10));
        EXPECT_EQ(clock.even_since, now);
    }
}

} // namespace
