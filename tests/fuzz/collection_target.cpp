// collection_target.cpp - the kinds of collection beside their model.
#include "base/owners.hpp"
#include "data/collection.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "models/sorted_model.hpp"

#include <string>

namespace
{

using owned_collection = std::unique_ptr<collection, releaser<collection_destroy>>;

/// A collection of texts beside its model. A list needs no more of the model than its places.
struct pair_of_lists {
    owned_collection made;
    sorted_model<std::string> model;
    bool is_sorted;
};

int compare_texts(const std::string& a, const std::string& b)
{
    return a.compare(b);
}

pair_of_lists make_lists(fuzz_input& input)
{
    const bool is_sorted = input.flag();
    const auto capacity = static_cast<std::int32_t>(input.number(12)) - 2;
    const auto grow_step = static_cast<std::int32_t>(input.number(6)) - 1;
    owned_collection made{is_sorted ? collection_new_strings(capacity, grow_step)
                                    : collection_new_list(capacity, grow_step)};
    require(made != nullptr, "there is memory for a collection");
    made->allow_duplicates = is_sorted && input.flag();
    sorted_model<std::string> model{.compare = compare_texts,
                                    .allow_duplicates = made->allow_duplicates,
                                    .grow_step = grow_step};
    model.reserve(capacity);
    return {std::move(made), std::move(model), is_sorted};
}

void expect_insertion(int result, bool is_possible, char* element)
{
    require(result == (is_possible ? 1 : 0), "an element is inserted where there is room for it");
    if (result != 1)
        std::free(element);
}

void try_add(pair_of_lists& lists, const std::string& text)
{
    char* element = str_dup(text.c_str());
    const int result = lists.made->add(lists.made.get(), element);
    const auto end = static_cast<std::ptrdiff_t>(lists.model.elements.size());
    expect_insertion(result,
                     lists.is_sorted ? lists.model.add(text) : lists.model.insert_at(end, text),
                     element);
}

/// Only a list takes elements at any place.
void try_insert(pair_of_lists& lists, std::int32_t index, const std::string& text)
{
    if (lists.is_sorted)
        return;
    char* element = str_dup(text.c_str());
    const int result = collection_insert_at(lists.made.get(), index, element);
    expect_insertion(result, lists.model.insert_at(index, text), element);
}

void try_find(const pair_of_lists& lists, const std::string& text)
{
    if (!lists.is_sorted)
        return;
    const sorted_model_place expected = lists.model.find(text);
    std::int32_t index = -7;
    const int found = lists.made->find(lists.made.get(), text.c_str(), &index);
    require(found == (expected.is_found ? 1 : 0), "what is held is found");
    require(index == static_cast<std::int32_t>(expected.index),
            "a search ends where the text belongs");
}

void try_reserve(pair_of_lists& lists, std::int32_t capacity)
{
    require(collection_reserve(lists.made.get(), capacity), "a few slots can be had");
    lists.model.reserve(capacity);
}

void compare(const pair_of_lists& lists)
{
    const collection& made = *lists.made;
    const std::vector<std::string>& expected = lists.model.elements;
    require(made.count == static_cast<std::int32_t>(expected.size()), "the count is right");
    require(made.capacity == lists.model.capacity, "slots are added as they are needed");
    for (std::int32_t index = 0; index < made.count; ++index) {
        const auto* text = static_cast<const char*>(made.items[index]);
        require(expected[static_cast<std::size_t>(index)] == text, "the order is right");
    }
}

void try_index_of(const pair_of_lists& lists, std::size_t place)
{
    if (lists.model.elements.empty())
        return;
    const auto index = static_cast<std::int32_t>(place % lists.model.elements.size());
    require(lists.made->index_of(lists.made.get(), lists.made->items[index]) == index ||
                lists.made->allow_duplicates,
            "an element is found where it is");
}

void step(pair_of_lists& lists, fuzz_input& input)
{
    const unsigned what = input.number(15);
    if (what < 8)
        try_add(lists, input.text(16));
    else if (what < 10)
        try_insert(lists, static_cast<std::int32_t>(input.number(20)) - 2, input.text(16));
    else if (what < 12)
        try_find(lists, input.text(16));
    else if (what < 13)
        try_index_of(lists, input.number(255));
    else if (what < 15)
        try_reserve(lists, static_cast<std::int32_t>(input.number(40)));
    else if (input.number(7) == 0) {
        collection_clear(lists.made.get());
        lists.model.elements.clear();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    pair_of_lists lists = make_lists(input);
    while (!input.is_empty())
        step(lists, input);
    compare(lists);
    return 0;
}
