// kept_subscriptions.hpp - who gets mail every day, in the database.
//
// The messages of a day are those of messages_visit. All functions return an error text, empty on
// success.
#pragma once

#include "server/storage/database.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tovrik
{

/// How many styles of mail there are; the first is 0.
constexpr unsigned mail_styles = 3;

struct mail_subscription {
    std::string address = {};
    std::uint16_t code = 0; ///< random, 1 to 65535; 0: there is no such subscription
    unsigned style = 0;
    std::int64_t mailed_day = 0; ///< the latest day whose messages were mailed, see day_number
};

/// What has become of a wish to subscribe.
enum class subscription_result { made, known, full };

/// Subscribes an address today; the first mail is about today. An address that is known keeps its
/// code and style. Beyond max_subscriptions none is made.
std::string subscription_keep(database& in, const std::string& address, std::int64_t today,
                              mail_subscription& kept, subscription_result& result);

/// The subscription of an address.
std::string subscription_read(database& in, const std::string& address, mail_subscription& kept);

/// Chooses a style below mail_styles. `is_kept` is false if there is no such subscription or style.
std::string subscription_set_style(database& in, const std::string& address, unsigned style,
                                   bool& is_kept);

/// The subscriptions to which no mail about `day` or a later one was sent.
std::string subscriptions_due(database& in, std::int64_t day, std::vector<mail_subscription>& due);

/// Remembers that the mail about a day was sent.
std::string subscription_mailed(database& in, const std::string& address, std::int64_t day);

/// Lets mails begin again for those who were sent one about `today` or a later day, which only a
/// clock that was ahead can bring about: the next one is about today.
std::string subscriptions_take_back(database& in, std::int64_t today);

/// How many subscriptions there are.
std::string subscriptions_count(database& in, std::size_t& count);

} // namespace tovrik
