// elapsed_test.cpp - time that has passed, though the clock may be set back.
#include "base/elapsed.hpp"

#include <gtest/gtest.h>

namespace
{

TEST(elapsed, is_the_time_since_a_start)
{
    std::time_t start = 100;
    EXPECT_EQ(elapsed_since(start, 100), 0);
    EXPECT_EQ(elapsed_since(start, 107), 7);
    EXPECT_EQ(start, 100);
}

TEST(elapsed, begins_again_when_the_clock_is_set_back_behind_the_start)
{
    std::time_t start = 100;
    EXPECT_EQ(elapsed_since(start, 40), 0);
    EXPECT_EQ(elapsed_since(start, 45), 5);
    EXPECT_EQ(elapsed_since(start, -1'000), 0);
    EXPECT_EQ(elapsed_since(start, -990), 10);
}

} // namespace
