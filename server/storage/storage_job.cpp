// storage_job.cpp - see storage_job.hpp.
#include "server/storage/storage_job.hpp"

#include "server/base/system_text.hpp"

#include <exception>
#include <iterator>
#include <sys/eventfd.h>
#include <utility>

namespace tovrik
{

void storage_job_run(storage_job& job, database& in)
{
    try {
        job.error = job.work(in);
    } catch (const std::exception& failure) {
        job.error = failure.what();
    }
}

std::string finished_jobs::open()
{
    event = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    return event ? "" : system_text("cannot make an event");
}

void finished_jobs::add(std::vector<storage_job> jobs)
{
    const std::lock_guard held{lock};
    finished.insert(finished.end(), std::make_move_iterator(jobs.begin()),
                    std::make_move_iterator(jobs.end()));
    eventfd_write(event.get(), 1);
}

std::vector<storage_job> finished_jobs::take()
{
    const std::lock_guard held{lock};
    eventfd_t count = 0;
    eventfd_read(event.get(), &count);
    return std::exchange(finished, {});
}

} // namespace tovrik
