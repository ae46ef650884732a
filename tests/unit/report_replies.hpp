// report_replies.hpp - a server's replies about a report, as the dispatcher passes them on.
#pragma once

#include "net/packet_kind.hpp"
#include "services/report.hpp"

#include <cstddef>
#include <cstdint>

/// The announcement of a report.
inline void report_header(server_entry& entry, const char* text)
{
    report_reply(
        entry, {{.kind = received_report_header, .length = 0, .extra = 0, .param1 = 0, .param2 = 0},
                reinterpret_cast<const unsigned char*>(text),
                text});
}

/// One of its pieces; at most 4096 bytes.
inline void report_piece(server_entry& entry, const unsigned char* bytes, std::size_t length)
{
    report_reply(entry, {{.kind = received_report_piece,
                          .length = static_cast<std::uint16_t>(length),
                          .extra = 0,
                          .param1 = 0,
                          .param2 = 0},
                         bytes,
                         nullptr});
}
