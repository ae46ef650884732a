// day_plot.hpp - the messages of the last 24 hours as bars.
#pragma once

#include "server/web/server_report.hpp"

#include <string>

namespace tovrik
{

/// A figure for a page: an SVG picture as wide as its place, with its text in constant size, a
/// title and a description, and below it the same numbers as a table to be opened.
std::string day_plot(const server_report& report);

} // namespace tovrik
