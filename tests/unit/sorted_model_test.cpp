// sorted_model_test.cpp - the sorted collection of servers beside its model.
#include "models/sorted_model.hpp"

#include "base/owners.hpp"
#include "data/server_registry.hpp"
#include "data/text.hpp"
#include "support/generated_cases.hpp"

#include <gtest/gtest.h>

namespace
{

using owned_collection = std::unique_ptr<collection, releaser<collection_destroy>>;
using owned_entry = std::unique_ptr<server_entry, releaser<server_entry_free>>;

/// What the order of the list depends on, and which record it is.
struct server_row {
    std::string name{};
    std::int32_t port = 0;
    const server_entry* record = nullptr;
};

/// By name in descending order, equal names by ascending port.
int compare_rows(const server_row& a, const server_row& b)
{
    if (a.name != b.name)
        return a.name > b.name ? -1 : 1;
    return a.port < b.port ? -1 : a.port > b.port ? 1 : 0;
}

server_row make_row(case_choices& choices)
{
    static const std::vector<std::string> names = {"a", "b",    "c.example", "c.example.org", "",
                                                   "B", "\xE4", "\x7F",      "a b",           "aa"};
    static const std::vector<std::int32_t> ports = {0, 1, 2202, 2203, 65'535, -1};
    return {choices.chance(90) ? choices.pick(names) : choices.hostile_text(3),
            choices.pick(ports)};
}

owned_entry make_entry(const server_row& row)
{
    owned_entry entry{static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)))};
    entry->ServerName = str_dup(row.name.c_str());
    entry->ServerPort = row.port;
    return entry;
}

/// The client's collection beside its model.
struct both_lists {
    owned_collection made{server_collection_new()};
    sorted_model<server_row> model{.compare = compare_rows, .capacity = 10, .grow_step = 5};

    void expect_same() const
    {
        ASSERT_EQ(made->count, std::ssize(model.elements));
        ASSERT_EQ(made->capacity, model.capacity);
        for (std::int32_t index = 0; index < made->count; ++index) {
            const server_row& row = model.elements[static_cast<std::size_t>(index)];
            ASSERT_EQ(made->items[index], row.record) << index;
            ASSERT_EQ(server_at(made.get(), index), row.record) << index;
            ASSERT_EQ(row.name, row.record->ServerName) << index;
            ASSERT_EQ(row.port, row.record->ServerPort) << index;
        }
        ASSERT_EQ(server_at(made.get(), -1), nullptr);
        ASSERT_EQ(server_at(made.get(), made->count), nullptr);
    }
    void add_server(server_row row)
    {
        owned_entry entry = make_entry(row);
        row.record = entry.get();
        const sorted_model_place place = model.find(row);
        const std::int32_t expected = place.is_found ? static_cast<std::int32_t>(place.index) : -1;
        const bool has_room = made->count < made->capacity || made->grow_step > 0;
        ASSERT_EQ(server_add(made.get(), entry.get()), expected);
        if (!place.is_found)
            model.insert_at(static_cast<std::ptrdiff_t>(place.index), row);
        // A list that cannot grow is not reported.
        if (!place.is_found && has_room)
            static_cast<void>(entry.release());
    }
    void add(server_row row)
    {
        owned_entry entry = make_entry(row);
        row.record = entry.get();
        const int result = made->add(made.get(), entry.get());
        ASSERT_EQ(result, model.add(row) ? 1 : 0);
        if (result == 1)
            static_cast<void>(entry.release());
    }
    void insert_at(std::int32_t index, server_row row)
    {
        owned_entry entry = make_entry(row);
        row.record = entry.get();
        const int result = collection_insert_at(made.get(), index, entry.get());
        ASSERT_EQ(result, model.insert_at(index, row) ? 1 : 0);
        if (result == 1)
            static_cast<void>(entry.release());
    }
    void find(const server_row& row) const
    {
        const owned_entry key = make_entry(row);
        const sorted_model_place expected = model.find(row);
        std::int32_t index = -7;
        ASSERT_EQ(made->find(made.get(), key.get(), &index), expected.is_found ? 1 : 0);
        ASSERT_EQ(index, static_cast<std::int32_t>(expected.index));
        ASSERT_EQ(made->index_of(made.get(), key.get()), index_of(row));
    }
    std::int32_t index_of(const server_row& row) const
    {
        const sorted_model_place place = model.find(row);
        if (!place.is_found)
            return -1;
        if (!model.allow_duplicates)
            return static_cast<std::int32_t>(place.index);
        for (std::size_t index = place.index; index < model.elements.size(); ++index) {
            if (model.elements[index].record == row.record)
                return static_cast<std::int32_t>(index);
        }
        return -1;
    }
    void look_up_all() const
    {
        for (const server_row& row : model.elements)
            ASSERT_EQ(made->index_of(made.get(), row.record), index_of(row));
    }
    void refuse_nothing() const
    {
        std::int32_t index = -7;
        ASSERT_EQ(made->find(made.get(), nullptr, &index), 0);
        ASSERT_EQ(index, 0);
        ASSERT_EQ(server_add(made.get(), nullptr), -2);
        server_entry nameless = {};
        ASSERT_EQ(server_add(made.get(), &nameless), -2);
    }
    void reserve(std::int32_t slots)
    {
        ASSERT_TRUE(collection_reserve(made.get(), slots));
        model.reserve(slots);
    }
    void clear()
    {
        collection_clear(made.get());
        model.elements.clear();
    }
    void set_grow_step(std::int32_t slots)
    {
        made->grow_step = slots;
        model.grow_step = slots;
    }
};

void step(both_lists& both, case_choices& choices)
{
    const std::size_t what = choices.number(99);
    if (what < 55)
        both.made->allow_duplicates ? both.add(make_row(choices))
                                    : both.add_server(make_row(choices));
    else if (what < 70)
        both.find(make_row(choices));
    else if (what < 80)
        both.add(make_row(choices));
    else if (what < 88)
        both.look_up_all();
    else if (what < 92)
        both.refuse_nothing();
    else if (what < 96)
        both.reserve(static_cast<std::int32_t>(choices.number(40)) - 5);
    else if (what < 98)
        both.set_grow_step(static_cast<std::int32_t>(choices.number(7)) - 2);
    else if (choices.chance(10))
        both.clear();
}

TEST(sorted_model, holds_and_finds_the_same_servers)
{
    run_generated_cases([](case_choices& choices) {
        both_lists both;
        ASSERT_NE(both.made, nullptr);
        both.made->allow_duplicates = both.model.allow_duplicates = choices.chance(25);
        for (std::size_t count = choices.number(50); count > 0 && !testing::Test::HasFailure();
             --count)
            step(both, choices);
        both.expect_same();
    });
}

TEST(sorted_model, takes_elements_at_the_same_places)
{
    run_generated_cases([](case_choices& choices) {
        both_lists both;
        for (std::size_t count = choices.number(16); count > 0; --count)
            both.insert_at(
                static_cast<std::int32_t>(choices.number(both.model.elements.size() + 3)) - 2,
                make_row(choices));
        both.expect_same();
    });
}

} // namespace
