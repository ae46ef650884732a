// storage.hpp - everything that a server keeps on disk, without ever making its loop wait.
//
// Owns the database's folder, a thread that writes and one that reads, and what waits for them.
// What is kept, and in which form, say the files about messages, updates, pagers and subscriptions:
// their functions are what a job calls.
//
// All functions are for one thread, the server's loop. It watches event_fd for reading and calls
// run_finished when it is ready:
//
//     kept.write({.work = [message](database& in) { return message_keep(in, message, now); },
//                 .done = [](const std::string& error) { ... }});
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/storage_job.hpp"
#include "server/storage/storage_thread.hpp"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace tovrik
{

class storage
{
public:
    storage();
    /// Finishes what is under way, without waiting for what still waits.
    ~storage();
    storage(const storage&) = delete;
    storage& operator=(const storage&) = delete;

    /// Closes what was open, and opens the database in `folder`, which is made (mode 0700) if it is
    /// missing, and calls `prepare` in this thread, in a transaction of its own, to read what is
    /// needed from the start. Only one process may have the folder open. Returns an error text that
    /// begins with the path concerned, empty on success.
    std::string open(const std::string& folder,
                     const std::function<std::string(database&)>& prepare);

    /// Has a job done by the thread that writes. It takes all waiting jobs, does them in one
    /// transaction, commits it, and only then finishes them. A job whose work returns an error is
    /// undone, the others are not. If the transaction fails (a full disk), all its jobs get the
    /// error; later ones may succeed again. False if max_storage_writes are waiting already, or
    /// nothing is open: the job is then dropped, and `done` is not called.
    bool write(storage_job job);

    /// Has a job done by the thread that reads: one at a time, each with a view of the database
    /// that does not change meanwhile. False if max_storage_reads are waiting already, or nothing
    /// is open.
    bool read(storage_job job);

    /// Readable when run_finished has something to do. -1 while nothing is open.
    int event_fd() const;
    /// Calls `done` of all finished jobs. They may start others.
    void run_finished();

    /// How many jobs are not handed out yet.
    std::size_t waiting_writes() const
    {
        return writes;
    }
    std::size_t waiting_reads() const
    {
        return reads;
    }

    /// Finishes all jobs that write, for at most `limit`, and ends the one that reads; the rest is
    /// finished with an error. The database is closed then, and run_finished still hands out what
    /// is finished. False if the system holds a thread up longer than that: what it works on is
    /// neither finished nor lost for sure.
    bool close(std::chrono::milliseconds limit);

private:
    std::string open_connections(const std::string& folder,
                                 const std::function<std::string(database&)>& prepare);

    unique_fd folder_lock;
    std::shared_ptr<finished_jobs> finished;
    storage_thread writer; ///< closed after the reader, since the last one tidies the log up
    storage_thread reader;
    bool is_open = false;
    std::size_t writes = 0;
    std::size_t reads = 0;
};

} // namespace tovrik
