// feed.cpp - see feed.hpp.
#include "sim/feed.hpp"

#include "sim/limits.hpp"

#include <algorithm>

namespace sim
{
namespace
{

constexpr std::time_t seconds_between_past_messages = 60;

std::size_t replay_limit(const server_options& options)
{
    return std::min(options.replay_count, max_replay_count);
}

} // namespace

feed::feed(const server_options& server) : options(server), generator(server.seed)
{
    const std::time_t now = std::time(nullptr);
    for (std::size_t age = replay_limit(options); age > 0; --age) {
        add(next_document(now - static_cast<std::time_t>(age) * seconds_between_past_messages));
    }
}

std::optional<feed_item> feed::next()
{
    return add(next_document(std::time(nullptr)));
}

std::optional<feed_item> feed::add(std::string_view xml)
{
    const auto made = options.compressed ? compressed_transmission(xml) : plain_transmission(xml);
    if (!made)
        return std::nullopt;
    const feed_item item{std::make_shared<std::string>(encode_packet(*made)), is_uplink(xml)};
    latest.push_back(item);
    while (latest.size() > replay_limit(options)) {
        latest.pop_front();
    }
    return item;
}

const std::deque<feed_item>& feed::history() const
{
    return latest;
}

std::string feed::next_document(std::time_t now)
{
    const auto& recorded = options.replay_documents;
    if (recorded.empty())
        return transmission_xml(generator.next(options.fixed_time.value_or(now)));
    const std::size_t index = next_recorded;
    next_recorded = (next_recorded + 1) % recorded.size();
    return recorded[index];
}

} // namespace sim
