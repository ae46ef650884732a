// collection.cpp - construction, growth and the operation tables of the three kinds of collection.
#include "data/collection.hpp"

#include "data/text.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace
{

/// Longest text that read_item and write_item pass, the NUL included.
constexpr std::size_t stored_text_limit = 4096;

/// Changes the number of slots, at least to count. False, and nothing changed, when out of memory.
bool set_capacity(collection* self, std::int64_t wanted)
{
    const std::int64_t limited = std::min<std::int64_t>(wanted, collection_max_capacity);
    const auto capacity = static_cast<std::int32_t>(std::max<std::int64_t>(limited, self->count));
    if (capacity == self->capacity)
        return true;
    if (capacity == 0) {
        std::free(self->items);
        self->items = nullptr;
    } else {
        void* items = std::realloc(self->items, sizeof(void*) * static_cast<std::size_t>(capacity));
        if (items == nullptr)
            return false;
        self->items = static_cast<void**>(items);
    }
    self->capacity = capacity;
    return true;
}

const void* pass_element(const void* element)
{
    return element;
}

int compare_addresses(const void* a, const void* b)
{
    if (a == b)
        return 0;
    return std::less<>()(a, b) ? -1 : 1;
}

int compare_texts(const void* a, const void* b)
{
    return std::strcmp(static_cast<const char*>(a), static_cast<const char*>(b));
}

int find_in_list(const collection* self, const void* key, std::int32_t* index)
{
    for (std::int32_t position = 0; position < self->count; ++position) {
        if (self->items[position] == key) {
            *index = position;
            return 1;
        }
    }
    *index = -1;
    return 0;
}

std::int32_t find_index_in_list(const collection* self, const void* element)
{
    std::int32_t index = -1;
    find_in_list(self, element, &index);
    return index;
}

int add_to_list(collection* self, void* element)
{
    return collection_insert_at(self, self->count, element);
}

int compare_at(const collection* self, std::int32_t position, const void* key)
{
    return self->compare(self->key_of(self->items[position]), key);
}

/// Where a search among duplicates ends after it has met an equal element at `match`: at the
/// element before the run of equal ones, or at 0.
std::int32_t find_before_equal_run(const collection* self, std::int32_t match, const void* key)
{
    // Kept on purpose: not at the first of the run but one short of it. Test:
    // collection_sorted.among_duplicates_finds_the_place_before_their_run.
    while (match > 0) {
        --match;
        if (compare_at(self, match, key) != 0)
            break;
    }
    return match;
}

int find_sorted(const collection* self, const void* key, std::int32_t* index)
{
    *index = 0;
    if (key == nullptr)
        return 0;
    std::int32_t low = 0;
    std::int32_t high = self->count - 1;
    while (low <= high) {
        const std::int32_t middle = (low + high) / 2;
        const int order = compare_at(self, middle, key);
        if (order == 0) {
            *index = self->allow_duplicates ? find_before_equal_run(self, middle, key) : middle;
            return 1;
        }
        if (order < 0)
            low = middle + 1;
        else
            high = middle - 1;
    }
    *index = low;
    return 0;
}

std::int32_t find_index_sorted(const collection* self, const void* element)
{
    std::int32_t index = 0;
    if (self->find(self, self->key_of(element), &index) == 0)
        return -1;
    if (!self->allow_duplicates)
        return index < self->count ? index : -1;
    while (index < self->count && self->items[index] != element)
        ++index;
    return index < self->count ? index : -1;
}

int add_sorted(collection* self, void* element)
{
    std::int32_t index = 0;
    if (self->find(self, self->key_of(element), &index) != 0 && !self->allow_duplicates)
        return 0;
    return collection_insert_at(self, index, element);
}

void* read_text(std::FILE* stream)
{
    char text[stored_text_limit];
    for (char& byte : text) {
        const int next = std::getc(stream);
        if (next == EOF)
            return nullptr;
        byte = static_cast<char>(next);
        if (byte == '\0')
            return str_dup(text);
    }
    return nullptr;
}

int write_text(std::FILE* stream, const void* element)
{
    const std::size_t size = std::strlen(static_cast<const char*>(element)) + 1;
    if (size > stored_text_limit)
        return 0;
    return std::fwrite(element, 1, size, stream) == size ? 1 : 0;
}

/// How the elements of one kind of collection are found and added.
struct kind_operations {
    decltype(collection::index_of) index_of;
    decltype(collection::add) add;
    decltype(collection::find) find;
};

collection* make_collection(std::int32_t capacity, std::int32_t grow_step,
                            const kind_operations& operations)
{
    auto* made = static_cast<collection*>(std::calloc(1, sizeof(collection)));
    if (made == nullptr)
        return nullptr;
    collection_reserve(made, capacity);
    made->grow_step = grow_step;
    made->index_of = operations.index_of;
    made->add = operations.add;
    made->find = operations.find;
    made->key_of = pass_element;
    made->compare = compare_addresses;
    made->free_item = std::free;
    return made;
}

} // namespace

collection* collection_new_list(std::int32_t capacity, std::int32_t grow_step)
{
    return make_collection(capacity, grow_step, {find_index_in_list, add_to_list, find_in_list});
}

collection* collection_new_sorted(std::int32_t capacity, std::int32_t grow_step)
{
    return make_collection(capacity, grow_step, {find_index_sorted, add_sorted, find_sorted});
}

collection* collection_new_strings(std::int32_t capacity, std::int32_t grow_step)
{
    collection* made = collection_new_sorted(capacity, grow_step);
    if (made == nullptr)
        return nullptr;
    made->compare = compare_texts;
    made->read_item = read_text;
    made->write_item = write_text;
    return made;
}

int collection_insert_at(collection* self, std::int32_t index, void* element)
{
    if (index < 0 || index > self->count)
        return 0;
    if (self->count == self->capacity)
        set_capacity(self, std::int64_t{self->count} + self->grow_step);
    if (self->count >= self->capacity)
        return 0;
    void** place = self->items + index;
    std::memmove(place + 1, place, sizeof(void*) * static_cast<std::size_t>(self->count - index));
    *place = element;
    ++self->count;
    return 1;
}

bool collection_reserve(collection* self, std::int32_t capacity)
{
    return set_capacity(self, capacity);
}

void collection_clear(collection* self)
{
    if (self->free_item != nullptr) {
        for (std::int32_t position = 0; position < self->count; ++position) {
            if (self->items[position] != nullptr)
                self->free_item(self->items[position]);
        }
    }
    self->count = 0;
}

void collection_destroy(collection* self)
{
    if (self == nullptr)
        return;
    collection_clear(self);
    std::free(self->items);
    std::free(self);
}
