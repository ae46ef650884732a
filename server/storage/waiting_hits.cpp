// waiting_hits.cpp - see waiting_hits.hpp.
#include "server/storage/waiting_hits.hpp"

#include "server/base/limits.hpp"

#include <algorithm>
#include <utility>

namespace tovrik
{
namespace
{

void drop_before(std::deque<pager_hit>& hits, std::time_t moment)
{
    std::erase_if(hits, [moment](const pager_hit& each) { return each.moment < moment; });
}

} // namespace

void waiting_hits::add(const pager_owner& owner, std::time_t moment, std::string text)
{
    restore({owner, {last_id + 1, moment, std::move(text)}});
}

void waiting_hits::restore(owned_hit kept)
{
    number_after(kept.hit.id);
    auto& hits = owners[kept.owner].hits;
    hits.push_back(std::move(kept.hit));
    if (hits.size() > max_pager_hits)
        hits.pop_front();
}

void waiting_hits::number_after(std::int64_t id)
{
    last_id = std::max(last_id, id);
}

const pager_hit* waiting_hits::next(const pager_owner& owner, std::time_t since)
{
    const auto found = owners.find(owner);
    if (found == owners.end())
        return nullptr;
    auto& [hits, on_its_way] = found->second;
    if (hits.front().id == on_its_way)
        return nullptr;
    drop_before(hits, since);
    if (!hits.empty())
        return &hits.front();
    owners.erase(found);
    return nullptr;
}

void waiting_hits::begin_telling(const pager_owner& owner, std::int64_t id)
{
    const auto found = owners.find(owner);
    if (found != owners.end())
        found->second.on_its_way = id;
}

void waiting_hits::give_back(const pager_owner& owner, std::int64_t id)
{
    const auto found = owners.find(owner);
    if (found != owners.end() && found->second.on_its_way == id)
        found->second.on_its_way = 0;
}

void waiting_hits::remove(const pager_owner& owner, std::int64_t id)
{
    const auto found = owners.find(owner);
    if (found == owners.end())
        return;
    auto& hits = found->second.hits;
    std::erase_if(hits, [id](const pager_hit& each) { return each.id == id; });
    if (hits.empty())
        owners.erase(found);
}

void waiting_hits::remove_owner(const pager_owner& owner)
{
    owners.erase(owner);
}

void waiting_hits::forget_before(std::time_t moment)
{
    for (auto& [owner, waiting] : owners) {
        drop_before(waiting.hits, moment);
    }
    std::erase_if(owners, [](const auto& entry) { return entry.second.hits.empty(); });
}

std::vector<owned_hit> waiting_hits::after(std::int64_t id) const
{
    std::vector<owned_hit> found;
    for (const auto& [owner, waiting] : owners) {
        const auto first = std::ranges::upper_bound(waiting.hits, id, {}, &pager_hit::id);
        for (auto each = first; each != waiting.hits.end(); ++each) {
            found.push_back({owner, *each});
        }
    }
    return found;
}

std::size_t waiting_hits::size() const
{
    std::size_t count = 0;
    for (const auto& [owner, waiting] : owners) {
        count += waiting.hits.size();
    }
    return count;
}

} // namespace tovrik
