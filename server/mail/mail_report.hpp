// mail_report.hpp - what the mails about a day say, in the three styles that clients choose from.
#pragma once

#include "server/storage/database.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tovrik
{

/// The styles as clients number them.
enum class mail_style : unsigned {
    tovrik, ///< every message as clients log it
    zobe,   ///< every message as in the reports that clients ask for
    news    ///< what the messages of the day come to
};

struct mail_report_request {
    std::int64_t day = 0; ///< see day_number
    mail_style style = mail_style::tovrik;
    std::string server_name = {};
    std::size_t max_bytes = 0; ///< of all messages together; the rest is left out, and that is said
};

struct mail_report {
    std::string subject = {};
    std::string text = {};
};

/// Makes the report of a day in UTC. Counts are true for the whole day, whatever is left out.
/// Airports are named after `reference`. Returns an error text, empty on success.
std::string mail_report_make(database& in, const mail_report_request& request,
                             const reference_data& reference, mail_report& made);

} // namespace tovrik
