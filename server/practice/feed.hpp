// feed.hpp - the practice server's own messages: made up, or those of a recorded file in turn.
#pragma once

#include "server/practice/options.hpp"
#include "server/practice/traffic_generator.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <string>
#include <variant>

namespace tovrik
{

/// A message, or a document as it was recorded.
using fed_message = std::variant<transmission, std::string>;

class feed
{
public:
    /// Both arguments must outlive the feed. Some of the generated messages are about the entries
    /// of `reference`, also about those that are added later.
    feed(const server_options& options, const reference_data& reference);

    /// The next message. A generated one is dated with `now`, unless the options fix its time.
    fed_message next(std::time_t now);

private:
    std::size_t take_turn(std::size_t count);
    transmission generate(std::time_t now);

    const server_options& options;
    const reference_data& reference;
    traffic_generator generator;
    std::size_t next_recorded = 0;   ///< index into the recorded documents or messages
    std::size_t since_featured = 0;  ///< messages since the last one about an added entry
    std::size_t featured_so_far = 0; ///< messages about added entries
};

} // namespace tovrik
