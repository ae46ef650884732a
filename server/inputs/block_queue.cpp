// block_queue.cpp - see block_queue.hpp.
#include "server/inputs/block_queue.hpp"

#include "server/inputs/input_limits.hpp"

#include <utility>

namespace tovrik
{

bool queue_is_full(const block_queue& queue, std::size_t size)
{
    return queue.blocks.size() >= max_waiting_blocks || queue.bytes + size > max_waiting_bytes;
}

void queue_push(block_queue& queue, std::string block)
{
    queue.bytes += block.size();
    queue.blocks.push_back(std::move(block));
}

std::string queue_pop(block_queue& queue)
{
    std::string block = std::move(queue.blocks.front());
    queue.blocks.pop_front();
    queue.bytes -= block.size();
    return block;
}

} // namespace tovrik
