// storage_job.hpp - a piece of work for the threads of the storage, and the list of finished ones.
#pragma once

#include "base/owners.hpp"
#include "server/storage/database.hpp"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace tovrik
{

struct storage_job {
    /// Runs in the storage's thread and returns an error text, empty on success. What it touches
    /// besides the database must be its own, or shared: it may outlive the asker.
    std::function<std::string(database&)> work;
    /// Runs in the asker's thread with the error, empty when everything is on disk.
    std::function<void(const std::string& error)> done;
    std::string error = {}; ///< set by the storage
    bool is_write = false;  ///< set by the storage
};

/// Does the work of a job. What it throws becomes its error.
void storage_job_run(storage_job& job, database& in);

/// The jobs that are finished and not handed out yet. Any thread may add; one takes.
class finished_jobs
{
public:
    /// Returns an error text, empty on success.
    std::string open();
    /// Readable while there may be some.
    int event_fd() const
    {
        return event.get();
    }
    void add(std::vector<storage_job> jobs);
    std::vector<storage_job> take();

private:
    unique_fd event;
    std::mutex lock;
    std::vector<storage_job> finished;
};

} // namespace tovrik
