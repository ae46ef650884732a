// collection_test.cpp - lists and sorted collections: order, growth, refusals and oddities.
#include "data/collection.hpp"

#include "base/owners.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace
{

using unique_collection = std::unique_ptr<collection, releaser<collection_destroy>>;

/// An element with a key, so that equal elements can be distinguished.
struct numbered {
    int key;
    char mark;
};

int compare_numbered(const void* a, const void* b)
{
    return static_cast<const numbered*>(a)->key - static_cast<const numbered*>(b)->key;
}

/// A sorted collection; the test owns the elements.
unique_collection make_numbered(bool allow_duplicates)
{
    unique_collection made(collection_new_sorted(10, 5));
    made->compare = compare_numbered;
    made->free_item = nullptr;
    made->allow_duplicates = allow_duplicates;
    return made;
}

/// A list; the test owns the elements.
unique_collection make_list(std::int32_t capacity, std::int32_t grow_step)
{
    unique_collection made(collection_new_list(capacity, grow_step));
    made->free_item = nullptr;
    return made;
}

std::string join_marks(const unique_collection& held)
{
    std::string all;
    for (std::int32_t index = 0; index < held->count; ++index)
        all += static_cast<const numbered*>(held->items[index])->mark;
    return all;
}

TEST(collection, every_kind_starts_empty_with_its_slots_reserved)
{
    for (auto* make : {collection_new_list, collection_new_sorted, collection_new_strings}) {
        const unique_collection made(make(10, 5));
        ASSERT_TRUE(made);
        EXPECT_EQ(made->count, 0);
        EXPECT_EQ(made->capacity, 10);
        EXPECT_EQ(made->grow_step, 5);
        EXPECT_FALSE(made->allow_duplicates);
        EXPECT_NE(made->items, nullptr);
        EXPECT_EQ(made->free_item, static_cast<void (*)(void*)>(std::free));
        const int element = 0;
        EXPECT_EQ(made->key_of(&element), &element);
    }
}

TEST(collection, only_strings_have_stream_operations)
{
    const unique_collection list(collection_new_list(1, 1));
    const unique_collection sorted(collection_new_sorted(1, 1));
    const unique_collection strings(collection_new_strings(1, 1));
    EXPECT_EQ(list->read_item, nullptr);
    EXPECT_EQ(list->write_item, nullptr);
    EXPECT_EQ(sorted->read_item, nullptr);
    EXPECT_EQ(sorted->write_item, nullptr);
    EXPECT_NE(strings->read_item, nullptr);
    EXPECT_NE(strings->write_item, nullptr);
}

TEST(collection, orders_by_unsigned_address_until_the_owner_replaces_that)
{
    const int pair[2] = {};
    const auto* high = std::bit_cast<const void*>(UINTPTR_MAX);
    for (auto* make : {collection_new_list, collection_new_sorted}) {
        const unique_collection made(make(1, 1));
        EXPECT_LT(made->compare(&pair[0], &pair[1]), 0);
        EXPECT_GT(made->compare(&pair[1], &pair[0]), 0);
        EXPECT_EQ(made->compare(&pair[0], &pair[0]), 0);
        EXPECT_GT(made->compare(high, &pair[0]), 0);
    }
}

TEST(collection, inserts_at_every_position_and_refuses_others)
{
    numbered elements[] = {{0, 'a'}, {0, 'b'}, {0, 'c'}, {0, 'd'}};
    const unique_collection list = make_list(4, 0);
    EXPECT_EQ(collection_insert_at(list.get(), 1, &elements[0]), 0);
    EXPECT_EQ(collection_insert_at(list.get(), -1, &elements[0]), 0);
    EXPECT_EQ(collection_insert_at(list.get(), 0, &elements[1]), 1);
    EXPECT_EQ(collection_insert_at(list.get(), 0, &elements[0]), 1);
    EXPECT_EQ(collection_insert_at(list.get(), 2, &elements[3]), 1);
    EXPECT_EQ(collection_insert_at(list.get(), 4, &elements[2]), 0);
    EXPECT_EQ(collection_insert_at(list.get(), -1, &elements[2]), 0);
    EXPECT_EQ(collection_insert_at(list.get(), 2, &elements[2]), 1);
    EXPECT_EQ(join_marks(list), "abcd");
}

TEST(collection, grows_by_its_step_and_only_when_full)
{
    numbered element = {0, 'x'};
    const unique_collection list = make_list(10, 5);
    for (int inserted = 0; inserted < 10; ++inserted)
        ASSERT_EQ(list->add(list.get(), &element), 1);
    EXPECT_EQ(list->capacity, 10);
    EXPECT_EQ(list->add(list.get(), &element), 1);
    EXPECT_EQ(list->capacity, 15);
    for (int inserted = 11; inserted < 200; ++inserted)
        ASSERT_EQ(list->add(list.get(), &element), 1);
    EXPECT_EQ(list->capacity, 200);
    EXPECT_EQ(list->count, 200);
    EXPECT_EQ(join_marks(list), std::string(200, 'x'));
}

TEST(collection, grows_from_zero_slots)
{
    numbered element = {0, 'x'};
    const unique_collection list = make_list(0, 3);
    EXPECT_EQ(list->items, nullptr);
    EXPECT_EQ(list->add(list.get(), &element), 1);
    EXPECT_EQ(list->capacity, 3);
}

TEST(collection, refuses_an_element_when_full_without_a_positive_step)
{
    numbered element = {0, 'x'};
    for (const std::int32_t grow_step : {0, -1, INT32_MIN}) {
        const unique_collection list = make_list(1, grow_step);
        EXPECT_EQ(list->add(list.get(), &element), 1);
        EXPECT_EQ(list->add(list.get(), &element), 0);
        EXPECT_EQ(list->count, 1);
        EXPECT_EQ(list->capacity, 1);
    }
}

TEST(collection, reserves_at_least_what_is_in_use)
{
    numbered elements[] = {{0, 'a'}, {0, 'b'}};
    const unique_collection list = make_list(2, 1);
    list->add(list.get(), &elements[0]);
    list->add(list.get(), &elements[1]);
    const struct {
        std::int32_t asked;
        std::int32_t given;
    } rows[] = {{100, 100}, {3, 3}, {3, 3}, {1, 2}, {0, 2}, {-7, 2}, {INT32_MIN, 2}};
    for (const auto& row : rows) {
        EXPECT_TRUE(collection_reserve(list.get(), row.asked)) << row.asked;
        EXPECT_EQ(list->capacity, row.given) << row.asked;
    }
    EXPECT_EQ(join_marks(list), "ab");
}

TEST(collection, frees_its_slots_when_empty)
{
    const unique_collection list = make_list(8, 1);
    EXPECT_TRUE(collection_reserve(list.get(), 0));
    EXPECT_EQ(list->capacity, 0);
    EXPECT_EQ(list->items, nullptr);
    EXPECT_TRUE(collection_reserve(list.get(), 0));
}

std::vector<const void*> released;

void record_release(void* element)
{
    released.push_back(element);
}

TEST(collection, clearing_releases_each_element_once_in_order_but_no_null)
{
    released.clear();
    numbered elements[] = {{0, 'a'}, {0, 'b'}};
    const unique_collection list = make_list(3, 1);
    list->free_item = record_release;
    list->add(list.get(), &elements[1]);
    list->add(list.get(), nullptr);
    list->add(list.get(), &elements[0]);
    collection_clear(list.get());
    EXPECT_EQ(released, (std::vector<const void*>{&elements[1], &elements[0]}));
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->capacity, 3);
    EXPECT_NE(list->items, nullptr);
    collection_clear(list.get());
    EXPECT_EQ(released.size(), 2U);
}

TEST(collection, clearing_without_release_only_resets_the_count)
{
    numbered element = {0, 'a'};
    const unique_collection list = make_list(3, 1);
    list->add(list.get(), &element);
    collection_clear(list.get());
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->items[0], &element);
}

TEST(collection, destroying_releases_the_elements)
{
    released.clear();
    numbered element = {0, 'a'};
    collection* list = collection_new_list(1, 1);
    list->free_item = record_release;
    list->add(list, &element);
    collection_destroy(list);
    EXPECT_EQ(released, (std::vector<const void*>{&element}));
    collection_destroy(nullptr);
}

TEST(collection_list, finds_the_identical_pointer_and_its_first_place)
{
    numbered elements[] = {{1, 'a'}, {1, 'b'}, {1, 'c'}};
    const unique_collection list = make_list(4, 1);
    list->compare = compare_numbered;
    for (int index : {0, 1, 0})
        EXPECT_EQ(list->add(list.get(), &elements[index]), 1);
    std::int32_t index = 99;
    EXPECT_EQ(list->find(list.get(), &elements[1], &index), 1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(list->find(list.get(), &elements[0], &index), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(list->find(list.get(), &elements[2], &index), 0);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(list->index_of(list.get(), &elements[1]), 1);
    EXPECT_EQ(list->index_of(list.get(), &elements[2]), -1);
}

TEST(collection_sorted, finds_or_names_the_insertion_point)
{
    numbered elements[] = {{2, 'a'}, {4, 'b'}, {6, 'c'}, {8, 'd'}};
    const unique_collection sorted = make_numbered(false);
    std::int32_t index = 99;
    EXPECT_EQ(sorted->find(sorted.get(), &elements[0], &index), 0);
    EXPECT_EQ(index, 0);
    for (int place : {2, 0, 3, 1})
        EXPECT_EQ(sorted->add(sorted.get(), &elements[place]), 1);
    EXPECT_EQ(join_marks(sorted), "abcd");
    const struct {
        int key;
        int found;
        std::int32_t index;
    } rows[] = {{1, 0, 0}, {2, 1, 0}, {3, 0, 1}, {4, 1, 1}, {5, 0, 2},
                {6, 1, 2}, {7, 0, 3}, {8, 1, 3}, {9, 0, 4}};
    for (const auto& row : rows) {
        const numbered key = {row.key, '?'};
        EXPECT_EQ(sorted->find(sorted.get(), &key, &index), row.found) << row.key;
        EXPECT_EQ(index, row.index) << row.key;
    }
}

TEST(collection_sorted, does_not_find_null_and_places_it_first)
{
    numbered element = {1, 'a'};
    const unique_collection sorted = make_numbered(false);
    sorted->add(sorted.get(), &element);
    std::int32_t index = 99;
    EXPECT_EQ(sorted->find(sorted.get(), nullptr, &index), 0);
    EXPECT_EQ(index, 0);
}

TEST(collection_sorted, passes_the_element_first_and_the_key_second)
{
    numbered element = {1, 'a'};
    const unique_collection sorted = make_numbered(false);
    sorted->add(sorted.get(), &element);
    sorted->compare = [](const void* a, const void*) {
        return static_cast<const numbered*>(a)->mark == 'a' ? 0 : 1;
    };
    const numbered key = {1, 'k'};
    std::int32_t index = 99;
    EXPECT_EQ(sorted->find(sorted.get(), &key, &index), 1);
}

TEST(collection_sorted, compares_keys_and_not_elements)
{
    numbered elements[] = {{1, 'b'}, {2, 'a'}, {3, 'a'}};
    const unique_collection sorted = make_numbered(false);
    sorted->key_of = [](const void* element) -> const void* {
        return &static_cast<const numbered*>(element)->mark;
    };
    sorted->compare = [](const void* a, const void* b) {
        return *static_cast<const char*>(a) - *static_cast<const char*>(b);
    };
    EXPECT_EQ(sorted->add(sorted.get(), &elements[0]), 1);
    EXPECT_EQ(sorted->add(sorted.get(), &elements[1]), 1);
    EXPECT_EQ(sorted->add(sorted.get(), &elements[2]), 0);
    EXPECT_EQ(join_marks(sorted), "ab");
    EXPECT_EQ(sorted->index_of(sorted.get(), &elements[0]), 1);
    EXPECT_EQ(sorted->index_of(sorted.get(), &elements[2]), 0);
    std::int32_t index = 99;
    EXPECT_EQ(sorted->find(sorted.get(), "b", &index), 1);
    EXPECT_EQ(index, 1);
}

TEST(collection_sorted, finds_the_middle_one_of_equals_where_none_are_allowed)
{
    numbered elements[] = {{1, 'a'}, {1, 'b'}, {1, 'c'}, {1, 'd'}};
    const unique_collection sorted = make_numbered(false);
    for (const std::int32_t middle : {0, 0, 1, 1}) {
        ASSERT_EQ(collection_insert_at(sorted.get(), sorted->count, &elements[sorted->count]), 1);
        std::int32_t index = 99;
        EXPECT_EQ(sorted->find(sorted.get(), &elements[0], &index), 1);
        EXPECT_EQ(index, middle) << sorted->count;
    }
}

TEST(collection_sorted, refuses_an_equal_element)
{
    numbered elements[] = {{1, 'a'}, {1, 'b'}};
    const unique_collection sorted = make_numbered(false);
    EXPECT_EQ(sorted->add(sorted.get(), &elements[0]), 1);
    EXPECT_EQ(sorted->add(sorted.get(), &elements[1]), 0);
    EXPECT_EQ(join_marks(sorted), "a");
}

TEST(collection_sorted, takes_an_equal_element_for_the_one_it_holds)
{
    numbered elements[] = {{1, 'a'}, {2, 'b'}};
    const numbered equal = {2, '?'};
    const numbered other = {3, '?'};
    const unique_collection sorted = make_numbered(false);
    sorted->add(sorted.get(), &elements[0]);
    sorted->add(sorted.get(), &elements[1]);
    EXPECT_EQ(sorted->index_of(sorted.get(), &elements[1]), 1);
    EXPECT_EQ(sorted->index_of(sorted.get(), &equal), 1);
    EXPECT_EQ(sorted->index_of(sorted.get(), &other), -1);
}

TEST(collection_sorted, finds_the_place_before_a_run_of_duplicates)
{
    const struct {
        std::vector<int> keys;
        int sought;
        std::int32_t index;
    } rows[] = {
        {{1, 2, 2}, 2, 0},       {{2, 2, 2}, 2, 0},       {{1, 1, 2, 2, 2, 3}, 2, 1},
        {{1, 2, 2, 2, 2}, 2, 0}, {{1, 2, 3, 4, 5}, 4, 2}, {{1, 2, 3}, 2, 0},
        {{1, 2, 3}, 1, 0},       {{1, 2, 3}, 3, 1},       {{1}, 1, 0},
    };
    for (const auto& row : rows) {
        const unique_collection sorted = make_numbered(true);
        std::vector<numbered> elements;
        for (const int key : row.keys)
            elements.push_back({key, '.'});
        for (numbered& element : elements)
            ASSERT_EQ(collection_insert_at(sorted.get(), sorted->count, &element), 1);
        const numbered key = {row.sought, '?'};
        std::int32_t index = 99;
        EXPECT_EQ(sorted->find(sorted.get(), &key, &index), 1);
        EXPECT_EQ(index, row.index) << testing::PrintToString(row.keys) << " " << row.sought;
    }
}

TEST(collection_sorted, adds_a_duplicate_at_the_place_before_the_run)
{
    numbered elements[] = {{1, 'a'}, {2, 'b'}, {2, 'c'}, {3, 'd'}};
    const unique_collection sorted = make_numbered(true);
    for (int place : {0, 3, 1})
        EXPECT_EQ(sorted->add(sorted.get(), &elements[place]), 1);
    EXPECT_EQ(join_marks(sorted), "abd");
    EXPECT_EQ(sorted->add(sorted.get(), &elements[2]), 1);
    EXPECT_EQ(join_marks(sorted), "cabd");
}

TEST(collection_sorted, distinguishes_duplicates_by_their_address)
{
    numbered elements[] = {{1, 'a'}, {2, 'b'}, {2, 'c'}, {2, 'd'}, {3, 'e'}};
    const numbered stranger = {2, '?'};
    const unique_collection sorted = make_numbered(true);
    for (numbered& element : elements)
        ASSERT_EQ(collection_insert_at(sorted.get(), sorted->count, &element), 1);
    for (std::int32_t index = 0; index < 5; ++index)
        EXPECT_EQ(sorted->index_of(sorted.get(), &elements[index]), index);
    EXPECT_EQ(sorted->index_of(sorted.get(), &stranger), -1);
}

} // namespace
