// waiting_hits.hpp - what pager lists have met while their owners were not connected.
//
// Owns the hits that their owners have not been told of, in memory. Whatever keeps them for longer
// (service_store) follows what changes here. Nobody but the owner is told of a hit, and of each
// only once: the oldest one is on its way until it is removed or given back, and those behind it
// wait meanwhile.
#pragma once

#include "server/storage/pager_lists.hpp"

#include <cstdint>
#include <ctime>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace tovrik
{

/// A message that a list asks for.
struct pager_hit {
    std::int64_t id = 0; ///< of two hits, the later one has the larger number
    std::time_t moment = 0;
    std::string text = {}; ///< what its owner is told
    bool operator==(const pager_hit&) const = default;
};

struct owned_hit {
    pager_owner owner;
    pager_hit hit;
    bool operator==(const owned_hit&) const = default;
};

class waiting_hits
{
public:
    /// Puts a new hit after an owner's others. Beyond max_pager_hits, the owner's oldest goes.
    void add(const pager_owner& owner, std::time_t moment, std::string text);

    /// Puts a hit of an earlier run back, with its number. They come in the order of their numbers.
    void restore(owned_hit kept);

    /// Later hits get larger numbers than this one.
    void number_after(std::int64_t id);

    /// The oldest hit of an owner that is not older than `since`; those before it are forgotten.
    /// Null if there is none, and while it is on its way. Good until the next change.
    const pager_hit* next(const pager_owner& owner, std::time_t since);

    /// The oldest hit of an owner is on its way to a client from now on.
    void begin_telling(const pager_owner& owner, std::int64_t id);

    /// A hit that was on its way has not reached its client.
    void give_back(const pager_owner& owner, std::int64_t id);

    /// An owner has been told of a hit.
    void remove(const pager_owner& owner, std::int64_t id);

    /// Forgets all hits of an owner.
    void remove_owner(const pager_owner& owner);

    /// Forgets all hits before a moment.
    void forget_before(std::time_t moment);

    /// All hits with numbers above this one, in the order of their numbers for each owner.
    std::vector<owned_hit> after(std::int64_t id) const;

    /// The number of the latest hit.
    std::int64_t latest() const
    {
        return last_id;
    }

    /// How many hits wait, of all owners.
    std::size_t size() const;

    bool empty() const
    {
        return owners.empty();
    }

private:
    struct hits_of_owner {
        std::deque<pager_hit> hits; ///< never empty, oldest first
        std::int64_t on_its_way = 0;
    };

    std::map<pager_owner, hits_of_owner> owners;
    std::int64_t last_id = 0;
};

} // namespace tovrik
