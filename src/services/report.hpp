// report.hpp - dated reports: the request, the server's replies, and saving a report to a file.
#pragma once

#include "data/server_registry.hpp"
#include "net/packet.hpp"

/// The user's command for reports: asks for a day and requests its report. Only for a connected
/// server that offers reports.
void report_request(server_entry& entry);

/// Whether report_reply would ask for a file name after this piece of a report, if what has come
/// can be decompressed.
bool report_reply_opens_box(const server_entry& entry, const packet_view& packet);

/// Takes a server's reply about a report: that it has been started, cannot be had, or will follow
/// in pieces, or one of the pieces. With the last piece the report is decompressed and the user is
/// asked for a file to save it in; the poll cycle waits meanwhile.
/// packet: of one of the five kinds of received_report_...
void report_reply(server_entry& entry, const packet_view& packet);
