// storage_thread.cpp - see storage_thread.hpp.
#include "server/storage/storage_thread.hpp"

#include "server/base/quiet_thread.hpp"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <mutex>
#include <utility>

namespace tovrik
{
namespace
{

constexpr std::chrono::milliseconds interrupt_pause{10};

} // namespace

struct storage_thread::shared {
    database connection; ///< used by the thread alone, until it has ended
    batch_runner run_jobs = nullptr;
    std::size_t batch_limit = 0;
    std::shared_ptr<finished_jobs> finished;

    std::mutex lock;
    std::condition_variable changed;
    std::deque<storage_job> waiting;
    bool is_stopping = false;  ///< the thread ends when nothing waits any more
    bool is_giving_up = false; ///< what waits is not done any more
    bool has_ended = false;

    void run();
    std::vector<storage_job> take_batch();
    bool wait_for_end(std::chrono::milliseconds limit);
    bool end_soon(std::chrono::milliseconds limit);
};

/// Waits for jobs; none if the thread is to end.
std::vector<storage_job> storage_thread::shared::take_batch()
{
    std::unique_lock held{lock};
    changed.wait(held, [this] { return is_stopping || !waiting.empty(); });
    const auto end =
        waiting.begin() + static_cast<std::ptrdiff_t>(std::min(waiting.size(), batch_limit));
    std::vector<storage_job> batch{std::make_move_iterator(waiting.begin()),
                                   std::make_move_iterator(end)};
    waiting.erase(waiting.begin(), end);
    if (is_giving_up) {
        for (storage_job& job : batch) {
            job.error = "the server has stopped";
            job.work = nullptr;
        }
    }
    return batch;
}

void storage_thread::shared::run()
{
    for (auto batch = take_batch(); !batch.empty(); batch = take_batch()) {
        if (batch.front().work)
            run_jobs(connection, batch);
        finished->add(std::move(batch));
    }
    const std::lock_guard held{lock};
    has_ended = true;
    changed.notify_all();
}

bool storage_thread::shared::wait_for_end(std::chrono::milliseconds limit)
{
    std::unique_lock held{lock};
    return changed.wait_for(held, limit, [this] { return has_ended; });
}

/// Interrupts statement after statement: between two of them, an interruption has no effect.
bool storage_thread::shared::end_soon(std::chrono::milliseconds limit)
{
    {
        const std::lock_guard held{lock};
        is_giving_up = true;
    }
    bool is_over = wait_for_end({});
    for (auto waited = limit; !is_over && waited.count() > 0; waited -= interrupt_pause) {
        connection.interrupt();
        is_over = wait_for_end(interrupt_pause);
    }
    return is_over;
}

storage_thread::~storage_thread()
{
    stop({}, {});
}

std::string storage_thread::start(database opened, batch_runner run, std::size_t batch_limit,
                                  std::shared_ptr<finished_jobs> finished)
{
    auto made = std::make_shared<shared>();
    made->connection = std::move(opened);
    made->run_jobs = run;
    made->batch_limit = batch_limit;
    made->finished = std::move(finished);
    std::string error = quiet_thread_start(thread, [made] { made->run(); });
    if (error.empty())
        inside = std::move(made);
    return error;
}

void storage_thread::add(storage_job job)
{
    const std::lock_guard held{inside->lock};
    inside->waiting.push_back(std::move(job));
    inside->changed.notify_all();
}

bool storage_thread::stop(std::chrono::milliseconds limit, std::chrono::milliseconds grace)
{
    if (!inside)
        return true;
    const auto stopped = std::exchange(inside, nullptr);
    {
        const std::lock_guard held{stopped->lock};
        stopped->is_stopping = true;
        stopped->changed.notify_all();
    }
    const bool has_ended = stopped->wait_for_end(limit) || stopped->end_soon(grace);
    has_ended ? thread.join() : thread.detach();
    return has_ended;
}

} // namespace tovrik
