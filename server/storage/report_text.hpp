// report_text.hpp - how the reports of a day are written.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/calendar_day.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <string>

namespace tovrik
{

/// The first line, without its end: "Messages of 10/07/2025 from Home".
std::string report_title(calendar_day day, const std::string& server_name);

/// "1 message", or "2 messages".
std::string report_count(std::size_t count);

/// A message as reports show it, with the names of its airports from `reference`: some lines, the
/// last one empty.
std::string report_message(const transmission& message, const reference_data& reference);

} // namespace tovrik
