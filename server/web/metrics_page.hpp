// metrics_page.hpp - the server's figures for Prometheus.
#pragma once

#include "server/web/server_report.hpp"

#include <string>

namespace tovrik
{

/// The type of the page.
constexpr const char* metrics_type = "text/plain; version=0.0.4; charset=utf-8";

/// The figures in Prometheus' text form 0.0.4, in UTF-8. Receivers are told apart by the label
/// `input`, their place from 1, since names may be the same; channels by their port.
std::string metrics_page(const server_report& report);

} // namespace tovrik
