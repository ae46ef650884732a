// idle_rule.cpp - see idle_rule.hpp.
#include "net/idle_rule.hpp"

#include "net/connection_end.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "ui/pane.hpp"

namespace
{

constexpr std::time_t heartbeat_after_s = 600;
constexpr std::time_t close_after_s = 900;

void send_heartbeat(server_entry& entry)
{
    send_packet(entry.socket_fd, sent_heartbeat, 0, 0, "^");
    status_report(colour::success, "%s - no data since 10 minutes. Sending heartbeat",
                  server_display_name(entry));
    entry.heartbeat_sent = 1;
}

} // namespace

void idle_rule_apply(server_entry& entry, std::time_t now)
{
    if (entry.last_data_time + heartbeat_after_s < now && entry.heartbeat_sent == 0) {
        send_heartbeat(entry);
    } else if (entry.last_data_time + close_after_s < now && entry.heartbeat_sent == 1) {
        close_by_server(entry);
        // Kept on purpose: nothing else clears this, so a second silence on a connection brings its
        // end without a second heartbeat; servers count on one.
        // Test: idle.closes_a_second_silence_without_a_second_heartbeat.
        entry.heartbeat_sent = 0;
    }
}
