// collection.hpp - the program's one container: a growable array of element pointers.
//
// A collection carries its own table of operations, so that one record type serves as an unsorted
// list, a sorted set of records and a sorted set of strings. It owns its items array and, if
// free_item is set, its elements. It knows nothing of what the elements are.
#pragma once

#include <cstdint>
#include <cstdio>

/// Largest number of slots, so that the array's byte size fits in 32 bits.
constexpr std::int32_t collection_max_capacity = 0x1FFFFFFF;

struct collection {
    void** items;           // elements 0 to count - 1 in use; null while nothing was reserved
    std::int32_t count;     // number of elements
    std::int32_t capacity;  // slots allocated in items
    std::int32_t grow_step; // slots added when an insertion finds the array full
    bool allow_duplicates;  // sorted kinds: whether equal elements may coexist; off at construction

    std::int32_t (*index_of)(const collection* self, const void* element);     // -1: not held
    int (*add)(collection* self, void* element);                               // 1 added, 0 not
    int (*find)(const collection* self, const void* key, std::int32_t* index); // 1 found, 0 not
    int (*compare)(const void* a, const void* b);                              // order of two keys
    const void* (*key_of)(const void* element);
    void (*free_item)(void* element);                          // null: not owned
    void* (*read_item)(std::FILE* stream);                     // strings only
    int (*write_item)(std::FILE* stream, const void* element); // strings only
};

/// A new, empty list in the order of insertion; `find` and `index_of` look for the identical
/// pointer. `capacity` slots are reserved, `grow_step` are added whenever they are used up.
/// Owned by the caller (collection_destroy). Null if the record cannot be allocated; slots that
/// cannot be are left for the first insertion. `free_item` is std::free, as in the other two kinds.
collection* collection_new_list(std::int32_t capacity, std::int32_t grow_step);

/// A new, empty collection in ascending order under `compare`, which orders by address until the
/// owner replaces it, before the first insertion. Otherwise like collection_new_list.
/// With `allow_duplicates`, `find` stops one place short of the first of several equal elements
/// (unless they begin at 0), and `add` inserts there.
collection* collection_new_sorted(std::int32_t capacity, std::int32_t grow_step);

/// A new, empty collection of texts in byte order, whose `write_item` puts one text, NUL included,
/// into a stream (1; 0 when it is too long or the stream fails) and whose `read_item` takes one
/// out again (malloc'ed; null when none is whole). Otherwise like collection_new_sorted.
/// Its elements are never null.
collection* collection_new_strings(std::int32_t capacity, std::int32_t grow_step);

/// Inserts `element` before position `index`, 0 to count; at count it is appended.
/// 1: inserted. 0: no such position, or no slot to be had; nothing has changed and the element
/// stays the caller's.
int collection_insert_at(collection* self, std::int32_t index, void* element);

/// Sets the number of slots to `capacity`, but not under count and not over
/// collection_max_capacity. False, and nothing changed, when out of memory.
bool collection_reserve(collection* self, std::int32_t capacity);

/// Takes out every element, and releases those that are not null if `free_item` is set, first to
/// last. The slots stay.
void collection_clear(collection* self);

/// Releases the elements as collection_clear does, then the collection itself; null is accepted.
void collection_destroy(collection* self);
