// feed.cpp - see feed.hpp.
#include "server/practice/feed.hpp"

#include "server/storage/reference_use.hpp"

namespace tovrik
{
namespace
{

/// One in this many generated messages is about an added entry, if there are any.
constexpr std::size_t messages_per_feature = 3;

} // namespace

feed::feed(const server_options& server, const reference_data& added)
    : options(server), reference(added), generator(server.seed)
{
}

fed_message feed::next(std::time_t now)
{
    if (!options.replay_documents.empty())
        return options.replay_documents[take_turn(options.replay_documents.size())];
    if (!options.replay_messages.empty())
        return options.replay_messages[take_turn(options.replay_messages.size())];
    return generate(options.fixed_time.value_or(now));
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

} // namespace tovrik
