// day_report.hpp - the report of an asker's day, made of the archive in the database.
#pragma once

#include "server/storage/calendar_day.hpp"
#include "server/storage/database.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>

namespace tovrik
{

struct day_report_request {
    std::time_t begin = 0; ///< the asker's midnight: a second before the moment that it sends
    std::string server_name = {};
    std::size_t max_part_bytes = 0; ///< of a part; only a single message may be longer
};

/// The day that begins at a moment somewhere on earth. Between 11:00 and 12:00 UTC it is that of
/// the places east of the date line.
calendar_day day_beginning_at(std::time_t begin);

/// Makes the report of all messages that were received within 24 hours from `begin` on, and gives
/// its parts to `take` one after the other, so that only one is in memory. Each is complete by
/// itself and says how many messages the day has; if there are several, its first line ends in
/// ", part 2 of 3". No part if there are no messages. Airports are named after `reference`. Its
/// counts are only true within one transaction (see storage::read). Returns an error text, empty on
/// success.
std::string day_report_make(database& in, const day_report_request& request,
                            const reference_data& reference,
                            const std::function<void(std::string part)>& take);

} // namespace tovrik
