// kept_messages.hpp - the archive of messages in the database, and what they come to.
//
// Counts are kept beside the messages, in the same transaction, so that no question needs a walk
// over the archive. All functions return an error text, empty on success.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/database.hpp"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>

namespace tovrik
{

struct kept_message {
    std::int64_t id = 0;       ///< later messages have higher ones
    std::time_t received = 0;  ///< when the server took it in
    transmission message = {}; ///< as it was then
};

/// Keeps a message that is received now.
std::string message_keep(database& in, const transmission& message, std::time_t received);

/// Forgets messages that were received before a moment, the oldest first and at most
/// max_forgotten_messages of them, and flights of earlier days. `forgotten` becomes their
/// registrations, one for each message: while there are as many as that maximum, there may be more.
/// Another job each time lets others in between.
std::string messages_forget(database& in, std::time_t before, std::vector<std::string>& forgotten);

/// Shows `visit` the messages that were received from `begin` on and before `end`, in that order,
/// until it returns false. The record is only good for that call.
std::string messages_visit(database& in, std::time_t begin, std::time_t end,
                           const std::function<bool(const kept_message&)>& visit);

/// How many messages there are.
std::string messages_count(database& in, std::uint64_t& count);

/// How many messages of an aircraft there are. Case and dots count.
std::string contacts_count(database& in, const std::string& registration, std::uint32_t& count);

/// The same for the aircraft with the most messages, at most `limit` of them.
std::string contacts_read(database& in, std::size_t limit,
                          std::map<std::string, std::uint32_t>& contacts);

/// The flights that were heard on a day (see day_number), in the form of flight_key; at most
/// `limit` of them.
std::string flights_read(database& in, std::int64_t day, std::size_t limit,
                         std::set<std::string>& flights);

/// How many different flights were heard on a day.
std::string flights_count(database& in, std::int64_t day, std::uint32_t& count);

/// Fills `hours` with the numbers of messages of the last hours; the last one is that of `now`.
std::string hours_read(database& in, std::time_t now, std::span<std::uint64_t> hours);

} // namespace tovrik
