// report.hpp - dated reports: the request, their reception in pieces, and saving them to a file.
#pragma once

#include "data/server_registry.hpp"

#include <cstddef>

/// The user's command for reports: asks for a day and requests its report. Only for a connected
/// server that offers reports.
void report_request(server_entry& entry);

/// Takes a report's announcement: "total TAB size" in decimal; without a tab only a size, and no
/// reception begins. Numbers out of bounds refuse the report.
void report_header(server_entry& entry, const char* text);

/// Takes one piece of an announced report; cut where it would exceed the announced total. With the
/// last piece the report is inflated and offered for saving.
void report_piece(server_entry& entry, const unsigned char* bytes, std::size_t length);
