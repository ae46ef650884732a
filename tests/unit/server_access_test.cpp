// server_access_test.cpp - how many wrong passwords an address may send.
#include "server/services/access_tries.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

namespace
{

using namespace std::chrono_literals;

constexpr tovrik::time_point start{1000s};
constexpr std::uint32_t here = 1;
constexpr std::uint32_t there = 2;

TEST(server_access_tries, are_bounded_for_each_address_and_minute)
{
    tovrik::access_tries tries;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(tries.may_try(here, 3, start)) << i;
        tries.add_wrong(here, start);
    }
    EXPECT_FALSE(tries.may_try(here, 3, start));
    EXPECT_TRUE(tries.may_try(there, 3, start));
    EXPECT_TRUE(tries.may_try(here, 4, start));
    EXPECT_FALSE(tries.may_try(here, 3, start + 1min - 1ns));
    EXPECT_TRUE(tries.may_try(here, 3, start + 1min));
    tries.add_wrong(here, start + 1min);
    EXPECT_TRUE(tries.may_try(here, 3, start + 1min)) << "a new minute has begun";
}

TEST(server_access_tries, are_not_bounded_without_a_limit)
{
    tovrik::access_tries tries;
    for (int i = 0; i < 100; ++i)
        tries.add_wrong(here, start);
    EXPECT_TRUE(tries.may_try(here, 0, start));
}

TEST(server_access_tries, forget_the_address_that_was_counted_the_longest_time_ago)
{
    tovrik::access_tries tries;
    for (std::uint32_t address = 0; address <= tovrik::max_watched_addresses; ++address)
        tries.add_wrong(address, start + address * 1ns);
    EXPECT_TRUE(tries.may_try(0, 1, start + 1s));
    EXPECT_FALSE(tries.may_try(1, 1, start + 1s));
    EXPECT_FALSE(tries.may_try(tovrik::max_watched_addresses, 1, start + 1s));
}

} // namespace
