// hand_over.cpp - see hand_over.hpp.
#include "server/inputs/hand_over.hpp"

#include "base/thread_start.hpp"
#include "server/inputs/input_limits.hpp"

#include <exception>
#include <new>
#include <poll.h>
#include <sys/eventfd.h>
#include <utility>

namespace tovrik
{
namespace
{

struct thread_work {
    std::shared_ptr<hand_over> shared;
    std::function<void()> work;
};

void end_thread(hand_over& shared)
{
    shared.is_connected = false;
    const std::lock_guard guard{shared.lock};
    shared.has_ended = true;
    shared.end_sign.notify_all();
}

void* run_work(void* argument)
{
    const std::unique_ptr<thread_work> given{static_cast<thread_work*>(argument)};
    try {
        given->work();
    } catch (const std::exception& failure) {
        hand_over_line(*given->shared, failure.what());
    }
    given->work = nullptr; // what it owns is released before the end is told
    end_thread(*given->shared);
    return nullptr;
}

} // namespace

std::shared_ptr<hand_over> hand_over_make()
{
    auto shared = std::make_shared<hand_over>();
    shared->filled = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    shared->stopping = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    return shared->filled && shared->stopping ? shared : nullptr;
}

bool hand_over_start(const std::shared_ptr<hand_over>& shared, std::function<void()> work)
{
    auto argument = std::make_unique<thread_work>(thread_work{shared, std::move(work)});
    pthread_t thread{};
    if (!thread_start(thread, run_work, argument.get()))
        return false;
    static_cast<void>(argument.release()); // the thread's now
    return true;
}

void hand_over_block(hand_over& shared, std::string block)
{
    const std::lock_guard guard{shared.lock};
    if (block.size() > max_block_bytes || queue_is_full(shared.blocks, block.size())) {
        ++shared.lost;
        return;
    }
    queue_push(shared.blocks, std::move(block));
    eventfd_write(shared.filled.get(), 1);
}

void hand_over_line(hand_over& shared, const std::string& line)
{
    const std::lock_guard guard{shared.lock};
    if (shared.lines.size() < max_waiting_lines)
        shared.lines.push_back(line);
    eventfd_write(shared.filled.get(), 1);
}

void hand_over_connected(hand_over& shared)
{
    shared.is_connected = true;
    ++shared.connections;
}

void hand_over_rest(const hand_over& shared, std::chrono::milliseconds pause)
{
    pollfd stopping{shared.stopping.get(), POLLIN, 0};
    poll(&stopping, 1, static_cast<int>(pause.count()));
}

void hand_over_take(hand_over& shared, block_queue& blocks, std::vector<std::string>& lines)
{
    const std::lock_guard guard{shared.lock};
    lines.swap(shared.lines);
    // Blocks that must wait leave the descriptor readable.
    if (!blocks.blocks.empty())
        return;
    std::swap(blocks, shared.blocks);
    eventfd_t count = 0;
    eventfd_read(shared.filled.get(), &count);
}

void hand_over_stop(hand_over& shared)
{
    shared.is_stopping = true;
    eventfd_write(shared.stopping.get(), 1);
}

void hand_over_wait(hand_over& shared, time_point deadline)
{
    std::unique_lock guard{shared.lock};
    shared.end_sign.wait_until(guard, deadline, [&shared] { return shared.has_ended; });
}

} // namespace tovrik
