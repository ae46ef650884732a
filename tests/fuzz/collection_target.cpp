// collection_target.cpp - the three kinds of collection beside sorted and unsorted vectors.
#include "base/owners.hpp"
#include "data/collection.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"

#include <cstring>
#include <vector>

namespace
{

using owned_collection = std::unique_ptr<collection, releaser<collection_destroy>>;

/// A collection of texts beside its expected content.
struct pair_of_lists {
    owned_collection made;
    std::vector<std::string> expected{};
    bool is_sorted;
};

pair_of_lists make_lists(fuzz_input& input)
{
    const bool is_sorted = input.flag();
    const auto capacity = static_cast<std::int32_t>(input.number(12)) - 2;
    const auto grow_step = static_cast<std::int32_t>(input.number(6)) - 1;
    owned_collection made{is_sorted ? collection_new_strings(capacity, grow_step)
                                    : collection_new_list(capacity, grow_step)};
    require(made != nullptr, "there is memory for a collection");
    made->allow_duplicates = is_sorted && input.flag();
    return {std::move(made), {}, is_sorted};
}

/// Where a binary search ends, and whether it found an equal text. Allowed duplicates are inserted
/// before the element in front of them, so the order need not be strict.
struct search_end {
    std::size_t place = 0;
    bool is_found = false;
};

std::size_t find_first_equal(const std::vector<std::string>& texts, std::size_t place)
{
    const std::string& text = texts[place];
    while (place > 0 && texts[--place] == text) {
    }
    return place;
}

search_end search(const pair_of_lists& lists, const std::string& text)
{
    std::size_t low = 0;
    std::size_t end = lists.expected.size();
    while (low < end) {
        const std::size_t middle = (low + end - 1) / 2;
        const int order = lists.expected[middle].compare(text);
        if (order == 0)
            return {lists.made->allow_duplicates ? find_first_equal(lists.expected, middle)
                                                 : middle,
                    true};
        (order < 0 ? low : end) = order < 0 ? middle + 1 : middle;
    }
    return {low, false};
}

bool has_space(const collection& made)
{
    return made.count < made.capacity || made.grow_step > 0;
}

void expect_insertion(pair_of_lists& lists, int result, bool is_possible, std::size_t place,
                      const std::string& text, char* element)
{
    require(result == (is_possible ? 1 : 0), "an element is inserted where there is room for it");
    if (result == 1)
        lists.expected.insert(lists.expected.begin() + static_cast<std::ptrdiff_t>(place), text);
    else
        std::free(element);
}

void try_add(pair_of_lists& lists, const std::string& text)
{
    const search_end end = search(lists, text);
    const bool is_refused = lists.is_sorted && !lists.made->allow_duplicates && end.is_found;
    const bool is_possible = !is_refused && has_space(*lists.made);
    const std::size_t place = lists.is_sorted ? end.place : lists.expected.size();
    char* element = str_dup(text.c_str());
    const int result = lists.made->add(lists.made.get(), element);
    expect_insertion(lists, result, is_possible, place, text, element);
}

/// Only a list takes elements at any place.
void try_insert(pair_of_lists& lists, std::int32_t index, const std::string& text)
{
    if (lists.is_sorted)
        return;
    const bool is_possible = index >= 0 && index <= lists.made->count && has_space(*lists.made);
    char* element = str_dup(text.c_str());
    const int result = collection_insert_at(lists.made.get(), index, element);
    expect_insertion(lists, result, is_possible, static_cast<std::size_t>(index), text, element);
}

void try_find(const pair_of_lists& lists, const std::string& text)
{
    if (!lists.is_sorted)
        return;
    const search_end end = search(lists, text);
    std::int32_t index = -7;
    const int found = lists.made->find(lists.made.get(), text.c_str(), &index);
    require(found == (end.is_found ? 1 : 0), "what is held is found");
    require(index == static_cast<std::int32_t>(end.place), "a search ends where the text belongs");
}

void try_reserve(pair_of_lists& lists, std::int32_t capacity)
{
    require(collection_reserve(lists.made.get(), capacity), "a few slots can be had");
    require(lists.made->capacity == std::max(capacity, lists.made->count),
            "slots in use are never given up");
}

void compare(const pair_of_lists& lists)
{
    const collection& made = *lists.made;
    require(made.count == static_cast<std::int32_t>(lists.expected.size()), "the count is right");
    require(made.capacity >= made.count, "every element has a slot");
    for (std::int32_t index = 0; index < made.count; ++index) {
        const auto* text = static_cast<const char*>(made.items[index]);
        require(lists.expected[static_cast<std::size_t>(index)] == text, "the order is right");
    }
}

void try_index_of(const pair_of_lists& lists, std::size_t place)
{
    if (lists.expected.empty())
        return;
    const auto index = static_cast<std::int32_t>(place % lists.expected.size());
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
        lists.expected.clear();
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
