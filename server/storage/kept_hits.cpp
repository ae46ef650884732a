// kept_hits.cpp - see kept_hits.hpp.
#include "server/storage/kept_hits.hpp"

#include "server/storage/calendar_day.hpp"
#include "server/storage/pager_hits.hpp"

#include <memory>
#include <utility>
#include <vector>

namespace tovrik
{

kept_hits::kept_hits(storage& storage_of_all, waiting_hits& waiting,
                     const std::function<void(const std::string&)>& taker)
    : kept(storage_of_all), hits(waiting), complain(taker)
{
}

std::string kept_hits::read(database& in)
{
    std::vector<owned_hit> found;
    std::string error = pager_hits_read(in, std::time(nullptr) - seconds_per_day, found, written);
    for (owned_hit& each : found) {
        hits.restore(std::move(each));
    }
    hits.number_after(written);
    return error;
}

void kept_hits::write()
{
    if (!is_writing && written < hits.latest())
        start_writing();
}

void kept_hits::write_last()
{
    if (!told.empty())
        write_told();
    if (written < hits.latest())
        start_writing();
}

void kept_hits::start_writing()
{
    const std::int64_t before = std::exchange(written, hits.latest());
    is_writing = true;
    if (!kept.write(
            {.work = [taken =
                          hits.after(before)](database& in) { return pager_hits_keep(in, taken); },
             .done = [this, before](const std::string& error) { finish_writing(before, error); }}))
        finish_writing(before, "the disk is too slow");
}

/// Hits that could not be written are tried again with the next one.
void kept_hits::finish_writing(std::int64_t before, const std::string& error)
{
    is_writing = false;
    note_trouble(error);
    if (error.empty()) {
        write();
    } else {
        written = before;
    }
}

void kept_hits::note_trouble(const std::string& error)
{
    const bool was_in_trouble = std::exchange(is_in_trouble, !error.empty());
    if (is_in_trouble && !was_in_trouble)
        complain("hits of pager lists are not kept: " + error);
    if (was_in_trouble && !is_in_trouble)
        complain("hits of pager lists are kept again");
}

void kept_hits::tell(std::int64_t id)
{
    told.push_back(id);
    write_told();
}

/// What could not be written is tried again with the next one.
void kept_hits::write_told()
{
    const auto ids = std::make_shared<const std::vector<std::int64_t>>(std::exchange(told, {}));
    const auto finish = [this, ids](const std::string& error) {
        note_trouble(error);
        if (!error.empty())
            told.insert(told.end(), ids->begin(), ids->end());
    };
    if (!kept.write(
            {.work = [ids](database& in) { return pager_hits_tell(in, *ids); }, .done = finish}))
        finish("the disk is too slow");
}

void kept_hits::forget_before(std::time_t moment)
{
    hits.forget_before(moment);
    if (!told.empty())
        write_told();
    kept.write({.work = [moment](database& in) { return pager_hits_forget(in, moment); },
                .done = [this](const std::string& error) { note_trouble(error); }});
}

} // namespace tovrik
