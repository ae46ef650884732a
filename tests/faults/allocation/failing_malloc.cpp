// failing_malloc.cpp - see failing_malloc.hpp.
#include "faults/allocation/failing_malloc.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <malloc.h>
#include <sys/mman.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace
{

constexpr int fresh_byte = 0xCD;
constexpr int freed_byte = 0xDB;

struct failing {
    std::atomic<bool> is_armed = false;
    failure_plan plan = failure_plan::none;
    long nth = 0;
    std::atomic<long> counted = 0;
    std::atomic<bool> has_failed = false;
    std::atomic<bool> is_clients = false;
    block_origin* origins = nullptr; // of failed allocations
    std::size_t origins_capacity = 0;
    std::size_t* origins_count = nullptr;
};
constinit failing state;

constinit block_tables* tables = nullptr;
constinit std::atomic_flag table_taken = ATOMIC_FLAG_INIT;

// The first backtrace may allocate.
constinit thread_local bool is_tracing = false;

class table_lock
{
public:
    table_lock()
    {
        while (table_taken.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~table_lock()
    {
        table_taken.clear(std::memory_order_release);
    }
    table_lock(const table_lock&) = delete;
    table_lock& operator=(const table_lock&) = delete;
};

block_origin make_origin();

/// When two threads fail at the same time, one failure may go unrecorded.
void record_failure()
{
    state.has_failed = true;
    if (state.origins != nullptr)
        state.origins[(*state.origins_count)++ % state.origins_capacity] = make_origin();
}

bool must_fail()
{
    if (!state.is_armed)
        return false;
    const long number = ++state.counted;
    const bool fails = state.plan == failure_plan::once
                           ? number == state.nth
                           : state.plan == failure_plan::from_then_on && number >= state.nth;
    if (fails) {
        record_failure();
        errno = ENOMEM;
    }
    return fails;
}

std::size_t hash_address(std::uintptr_t address)
{
    return (address >> 4) * 0x9E3779B97F4A7C15U >> 49;
}
static_assert(block_table_size == std::size_t{1} << (64 - 49));

block_origin make_origin()
{
    block_origin origin;
    if (is_tracing || !state.is_clients)
        return origin;
    is_tracing = true;
    origin.depth = backtrace(origin.frames, block_frames);
    is_tracing = false;
    return origin;
}

void make_tables()
{
    if (tables == nullptr)
        tables =
            static_cast<block_tables*>(mmap(nullptr, sizeof(block_tables), PROT_READ | PROT_WRITE,
                                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}

/// The place of a block, or the first free place for it; block_table_size if there is none.
std::size_t find_place(std::uintptr_t address, bool is_new)
{
    const std::size_t first = hash_address(address);
    for (std::size_t tried = 0; tried < block_table_size; ++tried) {
        const std::size_t place = (first + tried) % block_table_size;
        const std::uintptr_t found = tables->blocks[place].address;
        if (is_new ? found <= block_gone : found == address)
            return place;
        if (found == block_never)
            break;
    }
    return block_table_size;
}

void* add_block(void* memory, std::size_t size)
{
    if (memory == nullptr)
        return nullptr;
    const block_origin origin = make_origin();
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const table_lock lock;
    make_tables();
    const std::size_t place = find_place(address, true);
    if (place == block_table_size)
        std::abort();
    tables->blocks[place] = {address, size, state.is_clients, false};
    if (origin.depth > 0)
        tables->origins[place] = origin;
    return memory;
}

/// Blocks allocated by functions that are not replaced are not in the table.
void remove_block(void* memory)
{
    const table_lock lock;
    make_tables();
    const std::size_t place = find_place(reinterpret_cast<std::uintptr_t>(memory), false);
    if (place < block_table_size)
        tables->blocks[place].address = block_gone;
}

} // namespace

void allocations_arm(failure_plan plan, long nth)
{
    state.plan = plan;
    state.nth = nth;
    state.counted = 0;
    state.has_failed = false;
    state.is_armed = true;
}

long allocations_disarm()
{
    state.is_armed = false;
    return state.counted;
}

bool allocations_have_failed()
{
    return state.has_failed;
}

void allocations_note_failures(block_origin* origins, std::size_t capacity, std::size_t& count)
{
    state.origins_count = &count;
    state.origins_capacity = capacity;
    state.origins = origins;
}

void allocations_are_clients(bool yes)
{
    state.is_clients = yes;
}

block_tables* block_table()
{
    return tables;
}

extern "C" {

void* malloc(std::size_t size)
{
    if (must_fail())
        return nullptr;
    void* block = __libc_malloc(size);
    if (block != nullptr)
        std::memset(block, fresh_byte, size);
    return add_block(block, size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return must_fail() ? nullptr : add_block(__libc_calloc(count, size), count * size);
}

void* realloc(void* block, std::size_t size)
{
    if (must_fail())
        return nullptr;
    void* resized = __libc_realloc(block, size);
    if (block != nullptr && (resized != nullptr || size == 0))
        remove_block(block);
    return add_block(resized, size);
}

void free(void* block)
{
    if (block == nullptr)
        return;
    remove_block(block);
    std::memset(block, freed_byte, malloc_usable_size(block));
    __libc_free(block);
}

} // extern "C"
