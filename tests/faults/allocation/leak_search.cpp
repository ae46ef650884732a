// leak_search.cpp - see leak_search.hpp.
#include "faults/allocation/leak_search.hpp"

#include <algorithm>
#include <cstring>
#include <link.h>
#include <span>

namespace
{

constexpr std::size_t most_blocks = block_table_size;

/// The blocks in use, by address.
struct block_index {
    live_block* blocks[most_blocks];
    std::size_t count = 0;
    live_block* waiting[most_blocks]; // reached, and not looked through yet
    std::size_t waiting_count = 0;
};
block_index found_blocks;

void blocks_collect()
{
    block_index& index = found_blocks;
    index.count = 0;
    for (live_block& block : block_table()->blocks) {
        block.is_reached = false;
        if (block.address > block_gone)
            index.blocks[index.count++] = &block;
    }
    std::ranges::sort(std::span{index.blocks, index.count}, {},
                      [](const live_block* block) { return block->address; });
}

/// The block that a word points to or into; null when it is no pointer to any.
live_block* block_at(std::uintptr_t word)
{
    const std::span all{found_blocks.blocks, found_blocks.count};
    // Most words are no pointers at all.
    if (all.empty() || word < all.front()->address ||
        word > all.back()->address + all.back()->size_bytes)
        return nullptr;
    const auto after = std::ranges::upper_bound(
        all, word, {}, [](const live_block* block) { return block->address; });
    if (after == all.begin())
        return nullptr;
    live_block* block = *(after - 1);
    return word < block->address + std::max<std::size_t>(block->size_bytes, 1) ? block : nullptr;
}

void memory_scan(std::uintptr_t begin, std::size_t size)
{
    constexpr std::size_t step = sizeof(std::uintptr_t);
    const std::uintptr_t first = (begin + step - 1) / step * step;
    for (std::uintptr_t at = first; at + step <= begin + size; at += step) {
        std::uintptr_t word;
        std::memcpy(&word, reinterpret_cast<const void*>(at), step);
        live_block* block = block_at(word);
        if (block == nullptr || block->is_reached)
            continue;
        block->is_reached = true;
        found_blocks.waiting[found_blocks.waiting_count++] = block;
    }
}

bool is_own_index(std::uintptr_t begin, std::size_t size)
{
    const auto own = reinterpret_cast<std::uintptr_t>(&found_blocks);
    return begin <= own && own < begin + size;
}

/// Leaves out the index of blocks, which points to none of them but takes long to look through.
void data_scan(std::uintptr_t begin, std::size_t size)
{
    if (!is_own_index(begin, size))
        return memory_scan(begin, size);
    const auto own = reinterpret_cast<std::uintptr_t>(&found_blocks);
    memory_scan(begin, own - begin);
    const std::uintptr_t behind = own + sizeof found_blocks;
    memory_scan(behind, begin + size - behind);
}

int object_scan(dl_phdr_info* object, std::size_t, void*)
{
    for (const auto& segment : std::span{object->dlpi_phdr, object->dlpi_phnum}) {
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0)
            data_scan(object->dlpi_addr + segment.p_vaddr, segment.p_memsz);
        if (segment.p_type == PT_TLS && object->dlpi_tls_data != nullptr)
            memory_scan(reinterpret_cast<std::uintptr_t>(object->dlpi_tls_data), segment.p_memsz);
    }
    return 0;
}

} // namespace

void leaks_search(void (*found)(const live_block& block, const block_origin& origin))
{
    blocks_collect();
    dl_iterate_phdr(object_scan, nullptr);
    while (found_blocks.waiting_count > 0) {
        const live_block* block = found_blocks.waiting[--found_blocks.waiting_count];
        memory_scan(block->address, block->size_bytes);
    }
    const block_tables& tables = *block_table();
    for (const live_block* block : std::span{found_blocks.blocks, found_blocks.count}) {
        if (block->is_clients && !block->is_reached)
            found(*block, tables.origins[block - tables.blocks]);
    }
}
