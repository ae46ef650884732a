// sorted_model.hpp - a sorted collection: a model written from the collection's rules.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

/// Where a search ends: at an equal element, or where the element would belong.
struct sorted_model_place {
    std::size_t index = 0;
    bool is_found = false;
};

/// Elements in the ascending order of `compare`.
template <typename element> struct sorted_model {
    std::function<int(const element&, const element&)> compare;
    bool allow_duplicates = false;
    std::ptrdiff_t capacity = 0;
    std::ptrdiff_t grow_step = 0;
    std::vector<element> elements{};

    sorted_model_place find(const element& key) const
    {
        return allow_duplicates ? find_among_duplicates(key) : find_only(key);
    }
    /// False if there is no such place, or no room.
    bool insert_at(std::ptrdiff_t index, const element& added)
    {
        const auto count = static_cast<std::ptrdiff_t>(elements.size());
        if (index < 0 || index > count)
            return false;
        if (count == capacity)
            capacity = std::max(count, count + grow_step);
        if (count >= capacity)
            return false;
        elements.insert(elements.begin() + index, added);
        return true;
    }
    bool add(const element& added)
    {
        const sorted_model_place place = find(added);
        if (place.is_found && !allow_duplicates)
            return false;
        return insert_at(static_cast<std::ptrdiff_t>(place.index), added);
    }
    void reserve(std::ptrdiff_t slots)
    {
        capacity = std::max(slots, static_cast<std::ptrdiff_t>(elements.size()));
    }

private:
    sorted_model_place find_only(const element& key) const
    {
        std::size_t index = 0;
        while (index < elements.size() && compare(elements[index], key) < 0)
            ++index;
        return {index, index < elements.size() && compare(elements[index], key) == 0};
    }
    /// A duplicate is inserted one place before its equals. So the order need not be strict, and it
    /// matters which elements the search meets.
    sorted_model_place find_among_duplicates(const element& key) const
    {
        std::ptrdiff_t low = 0;
        std::ptrdiff_t high = static_cast<std::ptrdiff_t>(elements.size()) - 1;
        while (low <= high) {
            std::ptrdiff_t middle = (low + high) / 2;
            const int order = compare(elements[static_cast<std::size_t>(middle)], key);
            if (order < 0)
                low = middle + 1;
            else if (order > 0)
                high = middle - 1;
            else {
                while (middle > 0 && compare(elements[static_cast<std::size_t>(middle)], key) == 0)
                    --middle;
                return {static_cast<std::size_t>(middle), true};
            }
        }
        return {static_cast<std::size_t>(low), false};
    }
};
