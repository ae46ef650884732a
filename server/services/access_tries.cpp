// access_tries.cpp - see access_tries.hpp.
#include "server/services/access_tries.hpp"

#include "server/base/limits.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

constexpr std::chrono::minutes counted_time{1};

} // namespace

bool access_tries::may_try(std::uint32_t address, unsigned limit, time_point now)
{
    const auto found = counts.find(address);
    return limit == 0 || found == counts.end() || found->second.wrong < limit ||
           now >= found->second.minute_began + counted_time;
}

void access_tries::add_wrong(std::uint32_t address, time_point now)
{
    auto& count = counts[address];
    if (now >= count.minute_began + counted_time)
        count = {.minute_began = now};
    ++count.wrong;
    if (counts.size() <= max_watched_addresses)
        return;
    counts.erase(std::ranges::min_element(
        counts, {}, [](const auto& entry) { return entry.second.minute_began; }));
}

} // namespace tovrik
