// hand_over.hpp - what a thread of an input hands over to the server's loop.
//
// The thread and the input own it together. So neither has to wait for the other: an input that is
// gone leaves a thread behind that ends as soon as it can.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/inputs/block_queue.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tovrik
{

struct hand_over {
    unique_fd filled;   ///< readable for the loop while there are blocks or lines
    unique_fd stopping; ///< readable for the thread once it is to end
    std::atomic<bool> is_stopping = false;
    std::atomic<bool> is_connected = false;
    std::atomic<std::uint64_t> connections = 0;
    std::atomic<std::uint64_t> lost = 0; ///< blocks that found no room, or are too large

    std::mutex lock; ///< for what follows
    std::condition_variable end_sign;
    bool has_ended = false;
    block_queue blocks;
    std::vector<std::string> lines; ///< for the server's owner; at most max_waiting_lines
};

constexpr std::size_t max_waiting_lines = 16;

/// Null when the system has no descriptor to give.
std::shared_ptr<hand_over> hand_over_make();

/// Runs `work` in a thread of its own until it returns; what it throws ends it with a line. False
/// when the system has no thread to give.
bool hand_over_start(const std::shared_ptr<hand_over>& shared, std::function<void()> work);

/// For the thread: hands a block over, or counts it as lost.
void hand_over_block(hand_over& shared, std::string block);

/// For the thread: hands a line for the server's owner over, unless too many wait.
void hand_over_line(hand_over& shared, const std::string& line);

/// For the thread: notes that there is a connection.
void hand_over_connected(hand_over& shared);

/// For the thread: waits for `pause`, or less when it is to end.
void hand_over_rest(const hand_over& shared, std::chrono::milliseconds pause);

/// For the loop: takes all lines, and all blocks if `blocks` is empty.
void hand_over_take(hand_over& shared, block_queue& blocks, std::vector<std::string>& lines);

/// For the loop: asks the thread to end.
void hand_over_stop(hand_over& shared);

/// Waits until the thread has ended, until `deadline` at most.
void hand_over_wait(hand_over& shared, time_point deadline);

} // namespace tovrik
