// block_queue.hpp - blocks of bytes that wait to be read as JSON, within bounds.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

namespace tovrik
{

struct block_queue {
    std::deque<std::string> blocks;
    std::size_t bytes = 0; ///< of all blocks together
};

/// Whether a queue has no room for one more block of `size` bytes: it would have more than
/// max_waiting_blocks or max_waiting_bytes.
bool queue_is_full(const block_queue& queue, std::size_t size);

/// Appends a block. The caller has asked whether there is room.
void queue_push(block_queue& queue, std::string block);

/// Takes the oldest block; there is one.
std::string queue_pop(block_queue& queue);

} // namespace tovrik
