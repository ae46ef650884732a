// kept_hits.hpp - has the waiting hits of pager lists kept on disk, beside the loop.
#pragma once

#include "server/storage/storage.hpp"
#include "server/storage/waiting_hits.hpp"

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace tovrik
{

class kept_hits
{
public:
    /// All three must outlive it. `complain` gets a line when hits could not be kept, and when
    /// they can be again.
    kept_hits(storage& storage_of_all, waiting_hits& waiting,
              const std::function<void(const std::string&)>& complain);

    /// Fills the waiting hits with those of the last day. Returns an error text, empty on success.
    std::string read(database& in);

    /// Has the hits kept that are not kept yet. While some are being written, later ones wait for
    /// them, so that a flood of hits takes no more than its turn.
    void write();

    /// The same without waiting for others, since nothing can be written later.
    void write_last();

    /// Remembers that the owner of a hit has been told. What cannot be written is tried again with
    /// the next one, each hour, and at the end.
    void tell(std::int64_t id);

    /// Forgets hits before a moment.
    void forget_before(std::time_t moment);

private:
    void start_writing();
    void finish_writing(std::int64_t before, const std::string& error);
    void write_told();
    void note_trouble(const std::string& error);

    storage& kept;
    waiting_hits& hits;
    const std::function<void(const std::string&)>& complain;
    std::int64_t written = 0;       ///< the number of the latest hit that was given to the disk
    std::vector<std::int64_t> told; ///< whose owners know them, which is not written yet
    bool is_writing = false;
    bool is_in_trouble = false;
};

} // namespace tovrik
