// feed.cpp - see feed.hpp.
#include "sim/feed.hpp"

#include "sim/limits.hpp"
#include "sim/read_transmission.hpp"
#include "sim/reference_use.hpp"

#include <algorithm>
#include <utility>

namespace sim
{
namespace
{

constexpr std::time_t past_message_interval_s = 60;

/// One in this many generated messages is about an added entry, if there are any.
constexpr std::size_t messages_per_feature = 3;

std::size_t bound_replay_count(const server_options& options)
{
    return std::min(options.replay_count, max_replay_count);
}

} // namespace

feed::feed(const server_options& server, const reference_data& added)
    : options(server), reference(added), generator(server.seed)
{
    const std::time_t now = std::time(nullptr);
    for (std::size_t age = bound_replay_count(options); age > 0; --age) {
        make_next(now - static_cast<std::time_t>(age) * past_message_interval_s);
    }
}

std::optional<feed_item> feed::next()
{
    return make_next(std::time(nullptr));
}

std::optional<feed_item> feed::add(const std::string& xml)
{
    return remember(xml, read_transmission(xml));
}

std::optional<feed_item> feed::add(transmission message)
{
    if (message.time == 0)
        message.time = std::time(nullptr);
    apply_reference(message, reference);
    const std::string xml = transmission_xml(message);
    return remember(xml, std::move(message));
}

const std::deque<feed_item>& feed::history() const
{
    return latest;
}

std::optional<feed_item> feed::make_next(std::time_t now)
{
    if (!options.replay_documents.empty())
        return add(options.replay_documents[take_turn(options.replay_documents.size())]);
    if (!options.replay_messages.empty())
        return add(options.replay_messages[take_turn(options.replay_messages.size())]);
    return add(generate(options.fixed_time.value_or(now)));
}

std::size_t feed::take_turn(std::size_t count)
{
    const std::size_t index = next_recorded;
    next_recorded = (next_recorded + 1) % count;
    return index;
}

transmission feed::generate(std::time_t now)
{
    transmission message = generator.next(now);
    ++since_featured;
    if (since_featured >= messages_per_feature && !message.flight_number.empty()) {
        feature_entry(message, reference, featured_so_far);
        since_featured = 0;
        ++featured_so_far;
    }
    return message;
}

std::optional<feed_item> feed::remember(const std::string& xml, transmission message)
{
    const auto made = options.compressed ? compressed_transmission(xml) : plain_transmission(xml);
    if (!made)
        return std::nullopt;
    const feed_item item{encode_shared(*made), is_uplink(xml), std::move(message)};
    latest.push_back(item);
    while (latest.size() > bound_replay_count(options)) {
        latest.pop_front();
    }
    return item;
}

} // namespace sim
