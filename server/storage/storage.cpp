// storage.cpp - see storage.hpp.
#include "server/storage/storage.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/storage/database_file.hpp"
#include "server/storage/storage_schema.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace tovrik
{
namespace
{

constexpr mode_t private_folder_mode = 0700;
constexpr std::chrono::milliseconds interrupt_grace{1000};

void fail_jobs(std::vector<storage_job>& jobs, const std::string& error)
{
    for (storage_job& job : jobs) {
        if (job.error.empty())
            job.error = error;
    }
}

void write_job(database& in, storage_job& job)
{
    savepoint own{in};
    job.error = own.error();
    if (job.error.empty())
        storage_job_run(job, in);
    if (job.error.empty())
        job.error = own.release();
}

/// Does all jobs in one transaction. Returns the error of the transaction.
std::string write_together(database& in, std::vector<storage_job>& jobs)
{
    transaction together{in, transaction_use::writing};
    if (!together.error().empty())
        return together.error();
    for (storage_job& job : jobs) {
        write_job(in, job);
        if (!in.is_in_transaction()) // SQLite has undone the jobs before this one, too
            return job.error.empty() ? "the transaction was undone" : job.error;
    }
    return together.commit();
}

void write_batch(database& in, std::vector<storage_job>& jobs)
{
    const std::string error = write_together(in, jobs);
    if (!error.empty())
        fail_jobs(jobs, error);
}

void read_batch(database& in, std::vector<storage_job>& jobs)
{
    for (storage_job& job : jobs) {
        const transaction view{in, transaction_use::reading};
        job.error = view.error();
        if (job.error.empty())
            storage_job_run(job, in);
    }
}

std::string open_folder(const std::string& folder, unique_fd& lock)
{
    if (mkdir(folder.c_str(), private_folder_mode) != 0 && errno != EEXIST)
        return system_text(folder);
    lock = unique_fd{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (!lock)
        return system_text(folder);
    if (flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? folder + ": is in use by another server"
                                    : system_text(folder);
    return {};
}

std::string prepare_database(database& in, const std::string& path,
                             const std::function<std::string(database&)>& prepare)
{
    transaction all{in, transaction_use::writing};
    std::string error = all.error();
    if (error.empty())
        error = prepare(in);
    if (error.empty())
        error = all.commit();
    return error.empty() ? "" : path + ": " + error;
}

} // namespace

storage::storage() : finished(std::make_shared<finished_jobs>()) {}

storage::~storage()
{
    close({});
}

std::string storage::open_connections(const std::string& folder,
                                      const std::function<std::string(database&)>& prepare)
{
    const std::string path = folder + "/" + storage_file_name;
    database writing;
    database reading;
    std::string error = database_open(writing, path, storage_schema());
    if (error.empty())
        error = prepare_database(writing, path, prepare);
    if (error.empty())
        error = database_open_for_reading(reading, path);
    if (error.empty())
        error = writer.start(std::move(writing), write_batch, max_storage_writes, finished);
    if (error.empty())
        error = reader.start(std::move(reading), read_batch, 1, finished);
    return error;
}

std::string storage::open(const std::string& folder,
                          const std::function<std::string(database&)>& prepare)
{
    close({});
    std::string error = finished->open();
    if (error.empty())
        error = open_folder(folder, folder_lock);
    if (error.empty())
        error = open_connections(folder, prepare);
    is_open = error.empty();
    if (!is_open)
        close({});
    return error;
}

bool storage::write(storage_job job)
{
    if (!is_open || writes >= max_storage_writes)
        return false;
    ++writes;
    job.is_write = true;
    writer.add(std::move(job));
    return true;
}

bool storage::read(storage_job job)
{
    if (!is_open || reads >= max_storage_reads)
        return false;
    ++reads;
    job.is_write = false;
    reader.add(std::move(job));
    return true;
}

int storage::event_fd() const
{
    return finished->event_fd();
}

void storage::run_finished()
{
    for (const storage_job& job : finished->take()) {
        --(job.is_write ? writes : reads);
        if (job.done)
            job.done(job.error);
    }
}

bool storage::close(std::chrono::milliseconds limit)
{
    is_open = false;
    const bool has_read = reader.stop({}, interrupt_grace);
    const bool has_written = writer.stop(limit, interrupt_grace);
    // A thread that is held up keeps the folder locked until the process ends.
    if (has_read && has_written)
        folder_lock = unique_fd{};
    else
        folder_lock.release();
    return has_read && has_written;
}

} // namespace tovrik
