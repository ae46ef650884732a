// message_archive.hpp - the messages that a server has sent, for the reports of a day.
//
// Owns their texts, as a report shows them, and makes the report. report_requests compresses and
// sends it.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/calendar_day.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <ctime>
#include <deque>
#include <string>

namespace tovrik
{

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
