// collection_memory_test.cpp - what a collection keeps when it gets no memory for more slots.
#include "data/collection.hpp"
#include "unit/failing_memory.hpp"

#include "base/owners.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace
{

using unique_collection = std::unique_ptr<collection, releaser<collection_destroy>>;

/// A list without slots; the test owns the elements.
unique_collection make_list(std::int32_t grow_step)
{
    unique_collection made(collection_new_list(0, grow_step));
    made->free_item = nullptr;
    return made;
}

TEST(collection_out_of_memory, makes_no_collection_or_one_without_slots)
{
    for (auto* make : {collection_new_list, collection_new_sorted, collection_new_strings}) {
        unique_collection made;
        try_each_allocation({
            .prepare = [&] { made.reset(); },
            .call = [&] { made.reset(make(10, 5)); },
            .expect_after_failure =
                [&](memory_failure, long nth) {
                    ASSERT_EQ(made == nullptr, nth == 1);
                    if (made == nullptr)
                        return;
                    EXPECT_EQ(made->items, nullptr);
                    EXPECT_EQ(made->capacity, 0);
                    EXPECT_EQ(made->grow_step, 5);
                },
            .expect_success = [&] { EXPECT_EQ(made->capacity, 10); },
        });
    }
}

TEST(collection_out_of_memory, keeps_the_elements)
{
    int elements[2] = {};
    const unique_collection list = make_list(2);
    ASSERT_TRUE(collection_reserve(list.get(), 1));
    ASSERT_EQ(list->add(list.get(), &elements[0]), 1);
    const auto expect_unchanged = [&] {
        EXPECT_EQ(list->count, 1);
        EXPECT_EQ(list->capacity, 1);
        EXPECT_EQ(list->items[0], &elements[0]);
    };
    const auto shorten = [&] {
        list->count = 1;
        list->items[0] = &elements[0];
        collection_reserve(list.get(), 1);
    };
    int inserted = 0;
    try_each_allocation({
        .prepare = shorten,
        .call = [&] { inserted = collection_insert_at(list.get(), 0, &elements[1]); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_EQ(inserted, 0);
                expect_unchanged();
            },
        .expect_success = [&] { EXPECT_EQ(inserted, 1); },
    });
    bool is_reserved = false;
    try_each_allocation({
        .prepare = shorten,
        .call = [&] { is_reserved = collection_reserve(list.get(), 100); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_FALSE(is_reserved);
                expect_unchanged();
            },
        .expect_success = [&] { EXPECT_TRUE(is_reserved); },
    });
}

TEST(collection, holds_no_more_than_an_array_of_32_bits_can)
{
    int element = 0;
    const unique_collection list = make_list(INT32_MAX);
    // As if all slots were in use, since nothing reads the slots of a list that takes no more.
    list->count = list->capacity = collection_max_capacity;
    EXPECT_EQ(collection_max_capacity, 0x1FFFFFFF);
    EXPECT_EQ(list->add(list.get(), &element), 0);
    EXPECT_TRUE(collection_reserve(list.get(), INT32_MAX));
    EXPECT_EQ(list->count, collection_max_capacity);
    EXPECT_EQ(list->capacity, collection_max_capacity);
    list->count = list->capacity = 0;
}

} // namespace
