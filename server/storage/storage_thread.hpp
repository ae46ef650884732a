// storage_thread.hpp - a thread with a connection to the database and jobs that wait for it.
//
// Owns both. The storage has two of these, one that writes and one that reads.
#pragma once

#include "server/storage/storage_job.hpp"

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tovrik
{

/// Does the work of some jobs, and gives each its error.
using batch_runner = void (*)(database& in, std::vector<storage_job>& jobs);

class storage_thread
{
public:
    storage_thread() = default;
    /// Stops at once.
    ~storage_thread();
    storage_thread(const storage_thread&) = delete;
    storage_thread& operator=(const storage_thread&) = delete;

    /// Starts the thread. It takes at most `batch_limit` jobs at a time, runs them with `run`, and
    /// adds them to `finished`. Returns an error text, empty on success.
    std::string start(database opened, batch_runner run, std::size_t batch_limit,
                      std::shared_ptr<finished_jobs> finished);
    /// Adds a job to those that wait. The thread must have been started.
    void add(storage_job job);
    /// Lets the thread finish what waits until `limit` is over. What is under way then is
    /// interrupted, and what waits is finished with an error. Closes the connection. False if the
    /// thread is held up by the system even after `grace`: it is left alone, with its jobs.
    bool stop(std::chrono::milliseconds limit, std::chrono::milliseconds grace);

private:
    struct shared;

    std::shared_ptr<shared> inside; ///< the thread's, too
    std::thread thread;
};

} // namespace tovrik
