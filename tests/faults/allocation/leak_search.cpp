// leak_search.cpp - see leak_search.hpp.
#include "faults/allocation/leak_search.hpp"

#include <algorithm>
#include <cstring>
#include <link.h>
#include <span>

namespace
{

constexpr std::size_t max_blocks = block_table_size;

/// The blocks in use, by address.
struct block_index {
    live_block* blocks[max_blocks];
    std::size_t count = 0;
    live_block* waiting[max_blocks]; // reached, and not yet scanned
    std::size_t waiting_count = 0;
};
block_index found_blocks;

void collect_blocks()
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

/// The block that a word points to or into; null if there is none.
live_block* find_block(std::uintptr_t word)
{
    const std::span all{found_blocks.blocks, found_blocks.count};
    // Most words are not pointers.
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

void scan_memory(std::uintptr_t begin, std::size_t size)
{
    constexpr std::size_t step = sizeof(std::uintptr_t);
    const std::uintptr_t first = (begin + step - 1) / step * step;
    for (std::uintptr_t at = first; at + step <= begin + size; at += step) {
        std::uintptr_t word;
        std::memcpy(&word, reinterpret_cast<const void*>(at), step);
        live_block* block = find_block(word);
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

/// Skips the index of blocks, which points to none of them but takes long to scan.
void scan_data(std::uintptr_t begin, std::size_t size)
{
    if (!is_own_index(begin, size))
        return scan_memory(begin, size);
    const auto own = reinterpret_cast<std::uintptr_t>(&found_blocks);
    scan_memory(begin, own - begin);
    const std::uintptr_t after = own + sizeof found_blocks;
    scan_memory(after, begin + size - after);
}

int scan_object(dl_phdr_info* object, std::size_t, void*)
{
    for (const auto& segment : std::span{object->dlpi_phdr, object->dlpi_phnum}) {
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0)
            scan_data(object->dlpi_addr + segment.p_vaddr, segment.p_memsz);
        if (segment.p_type == PT_TLS && object->dlpi_tls_data != nullptr)
            scan_memory(reinterpret_cast<std::uintptr_t>(object->dlpi_tls_data), segment.p_memsz);
    }
    return 0;
}

} // namespace

void leaks_search(void (*found)(const live_block& block, const block_origin& origin))
{
    collect_blocks();
    dl_iterate_phdr(scan_object, nullptr);
    while (found_blocks.waiting_count > 0) {
        const live_block* block = found_blocks.waiting[--found_blocks.waiting_count];
        scan_memory(block->address, block->size_bytes);
    }
    const block_tables& tables = *block_table();
    for (const live_block* block : std::span{found_blocks.blocks, found_blocks.count}) {
        if (block->is_clients && !block->is_reached)
            found(*block, tables.origins[block - tables.blocks]);
    }
}
