// message_archive.hpp - the messages that a server has sent, for the reports of a day.
//
// Owns their texts, as a report shows them, and makes the report. report_requests compresses and
// sends it.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <ctime>
#include <deque>
#include <string>

namespace tovrik
{

struct calendar_day {
    int day = 0;   ///< 1 to 31
    int month = 0; ///< 1 to 12
    int year = 0;
    bool operator==(const calendar_day&) const = default;
};

/// The day of a moment in this machine's time zone; its `day` is 0 if the system has no date for
/// it.
calendar_day local_day(std::time_t time);

/// The day of a moment in UTC, as messages are dated.
calendar_day utc_day(std::time_t time);

class message_archive
{
public:
    /// Keeps a message that is sent now, with the names of its airports from `reference`. The
    /// oldest messages beyond max_archived_messages and max_archived_bytes are dropped.
    void add(const transmission& message, std::time_t now, const reference_data& reference);

    /// The report of a day: the messages that were sent on that day in this machine's time zone,
    /// and those that are dated with it. Empty if there are none. If their texts have more than
    /// max_report_bytes, only the latest are shown.
    std::string report_of(calendar_day day, const std::string& server_name) const;

    std::size_t size() const;

private:
    struct archived_message {
        calendar_day sent;
        calendar_day dated;
        std::string text;
    };

    std::deque<archived_message> messages;
    std::size_t total_bytes = 0;
};

} // namespace tovrik
