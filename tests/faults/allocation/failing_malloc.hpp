// failing_malloc.hpp - the test program's own malloc, calloc, realloc and free.
//
// They replace the C library's everywhere in the process: in the client, in curses, zlib and the C
// and C++ libraries themselves. They fail on demand, record every block in use, and overwrite fresh
// and freed memory, so that nothing works only because of its old content.
#pragma once

#include <cstddef>
#include <cstdint>

/// Which of the counted allocations fail.
enum class failure_plan : std::uint8_t { none, once, from_then_on };

/// Counts allocations of all threads from here on. nth: the first one to fail, from 1.
void allocations_arm(failure_plan plan, long nth);

/// Lets allocations succeed again. Returns how many were counted.
long allocations_disarm();

/// Whether an allocation has failed since the last arming.
bool allocations_have_failed();

struct block_origin;

/// Records where allocations fail, the last `capacity` of them, the n-th at (n - 1) % capacity.
/// count: how many have failed.
void allocations_note_failures(block_origin* origins, std::size_t capacity, std::size_t& count);

/// Whether blocks allocated from here on belong to the client; others never count as leaks.
void allocations_are_clients(bool yes);

/// One block in use, or a free place in the table.
struct live_block {
    std::uintptr_t address = 0; // block_never or block_gone: a free place
    std::size_t size_bytes = 0;
    bool is_clients = false;
    bool is_reached = false; // for the search for leaks
};
constexpr std::uintptr_t block_never = 0; // no block was ever in this place
constexpr std::uintptr_t block_gone = 1;

constexpr int block_frames = 20;

/// Where an allocation was requested.
struct block_origin {
    int depth = 0;
    void* frames[block_frames] = {}; // return addresses, innermost first
};

constexpr std::size_t block_table_size = std::size_t{1} << 15;

/// All blocks in use, and the origins of the client's in the same order. Lies outside the program's
/// data, so that its own pointers keep no block reachable.
struct block_tables {
    live_block blocks[block_table_size];
    block_origin origins[block_table_size];
};

/// To be read only while no other thread runs. Null before the first allocation.
block_tables* block_table();
