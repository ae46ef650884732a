// poll.cpp - see poll.hpp.
#include "net/poll.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "net/capabilities.hpp"
#include "net/connection.hpp"
#include "net/packet_input.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/readiness.hpp"
#include "net/transmission.hpp"
#include "services/pager_list.hpp"
#include "services/report.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <string_view>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::time_t heartbeat_after_s = 600;
constexpr std::time_t close_after_s = 900;
constexpr unsigned poll_interval_s = 1;

/// A cycle over many busy servers stops for a moment after this time, so that keys are read.
constexpr std::chrono::milliseconds longest_run{20};
/// But not before so many packets: a few are always dealt with in one run.
constexpr int packets_before_break = 16;
constexpr suseconds_t break_us = 1'000;

/// What a handler gets to see of a packet.
struct packet_view {
    packet_header header;
    const unsigned char* payload; // packet_payload_length(header) bytes
    const char* text;             // the same of a text kind, terminated
};

using packet_handler = void (*)(server_entry& entry, const packet_view& packet);

void on_close(server_entry& entry, const packet_view&)
{
    close_by_server(entry);
}

/// The marker turns while a server sends ticks; behind the settings page it stands still.
void on_tick(server_entry& entry, const packet_view&)
{
    if (app_state.settings_shown != 0)
        return;
    const std::int32_t row = entry.list_row + 1;
    server_marker_write(row, server_marker_read(row) == '-' ? '/' : '-');
}

void on_crc_on(server_entry& entry, const packet_view&)
{
    entry.crc_check = 1;
}

void on_crc_off(server_entry& entry, const packet_view&)
{
    entry.crc_check = 0;
}

void on_replay(server_entry&, const packet_view& packet)
{
    const std::uint32_t count = packet.header.param1 | std::uint32_t{packet.header.param2} << 16;
    status_report(colour::notice, "Now receiving the last %u transmissions", count);
}

void on_transmission(server_entry& entry, const packet_view& packet)
{
    const xml_document document{xml_parse(packet.text)};
    present_transmission(entry, document.get());
}

void on_compressed_transmission(server_entry& entry, const packet_view& packet)
{
    const heap_bytes text = decompress_packet(packet.payload, packet.header.extra,
                                              packet_payload_length(packet.header));
    if (!text)
        return;
    const xml_document document{xml_parse(reinterpret_cast<const char*>(text.get()))};
    present_transmission(entry, document.get());
}

void on_capabilities(server_entry& entry, const packet_view& packet)
{
    handle_capabilities(entry, packet.text);
}

void on_server_text(server_entry&, const packet_view& packet)
{
    if (std::string_view{packet.text}.find('\n') == std::string_view::npos)
        return status_report(colour::server_text, "%s", packet.text);
    const heap_text text{str_replace(str_dup(packet.text), "\n\n", "\n")};
    if (!text)
        return;
    for (std::string_view rest = text.get(); !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        status_report(colour::server_text, "%.*s", static_cast<int>(line.size()), line.data());
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    }
}

void on_password_refused(server_entry& entry, const packet_view&)
{
    std::free(entry.Password);
    entry.Password = nullptr;
}

void on_identification_request(server_entry& entry, const packet_view&)
{
    send_packet(entry.socket_fd, packet_identification, 0, 0, "ncursesclient");
}

void on_notice(server_entry&, const packet_view& packet)
{
    status_report(colour::text, "%s", packet.text);
}

void on_error_text(server_entry&, const packet_view& packet)
{
    status_report(colour::error, "%s", packet.text);
}

void on_still_connected(server_entry& entry, const packet_view&)
{
    status_report(colour::notice, "You are still connected to %s", server_display_name(entry));
}

void on_report_header(server_entry& entry, const packet_view& packet)
{
    report_header(entry, packet.text);
}

void on_report_piece(server_entry& entry, const packet_view& packet)
{
    report_piece(entry, packet.payload, packet_payload_length(packet.header));
}

void on_pager_list(server_entry&, const packet_view& packet)
{
    pager_list_show(packet.text);
}

void on_uptime(server_entry&, const packet_view& packet)
{
    show_uptime(packet.text);
}

/// What the client does with one kind of packet: beeps, then the message, then the handler.
struct packet_kind {
    std::uint32_t number;
    int beeps;
    colour pair;           // of the message
    const char* message;   // null: none of its own
    packet_handler handle; // null: nothing more to do
};

constexpr packet_kind packet_kinds[] = {
    // ascending by number, searched by halves
    {3, 0, colour::text, nullptr, on_close},
    {5, 0, colour::text, nullptr, on_tick},
    {25, 0, colour::text, nullptr, on_crc_on},
    {26, 0, colour::text, nullptr, on_crc_off},
    {27, 0, colour::text, nullptr, on_replay},
    {35, 0, colour::success, "Your update request was successfully added", nullptr},
    {36, 1, colour::error, "Your update request could not be added", nullptr},
    {40, 0, colour::text, nullptr, on_transmission},
    {41, 0, colour::text, nullptr, on_capabilities},
    {64, 0, colour::text, nullptr, on_server_text},
    {71, 0, colour::notice, "Report creation process started...", nullptr},
    {72, 1, colour::error, "All report processes are busy. Try later", nullptr},
    {73, 1, colour::error, "No messages for the selected date found", nullptr},
    {74, 0, colour::text, nullptr, on_report_header},
    {76, 1, colour::error, "Pager process is blocked. Please try later", nullptr},
    {78, 0, colour::success, "Your Pager Request was successfully added/removed", nullptr},
    {79, 1, colour::error, "Your Pager Request could not be added/removed", nullptr},
    {82, 1, colour::success, "Password accepted. MessageAccess granted", nullptr},
    {83, 1, colour::error, "Your password doesnt match. MessageAccess denied", on_password_refused},
    {85, 0, colour::secondary, "Answering identification request...", on_identification_request},
    {86, 0, colour::secondary, "Client identified. Access granted", nullptr},
    {87, 0, colour::error, "Identification unknown. Client rejected", nullptr},
    {89, 0, colour::text, nullptr, on_pager_list},
    {90, 0, colour::text, nullptr, on_server_text},
    {100, 0, colour::text, nullptr, on_close},
    {102, 0, colour::text, nullptr, on_close},
    {103, 0, colour::text, nullptr, on_notice},
    {106, 1, colour::error, "Updates on this database are not allowed", nullptr},
    {108, 1, colour::text, nullptr, on_error_text},
    {149, 3, colour::text, nullptr, on_still_connected},
    {153, 0, colour::text, nullptr, on_uptime},
    {204, 0, colour::text, nullptr, on_compressed_transmission},
    {205, 0, colour::text, nullptr, on_report_piece},
};
static_assert(std::ranges::is_sorted(packet_kinds, {}, &packet_kind::number));

void idle_rule(server_entry& entry, std::time_t now)
{
    if (entry.last_data_time + heartbeat_after_s < now && entry.heartbeat_sent == 0) {
        send_packet(entry.socket_fd, packet_heartbeat, 0, 0, "^");
        status_report(colour::success, "%s - no data since 10 minutes. Sending heartbeat",
                      server_display_name(entry));
        entry.heartbeat_sent = 1;
    } else if (entry.last_data_time + close_after_s < now && entry.heartbeat_sent == 1) {
        close_by_server(entry);
        // Only this close takes it back, so a second silence gets no second heartbeat.
        entry.heartbeat_sent = 0;
    }
}

bool is_polled(const server_entry& entry)
{
    return entry.socket_fd != 0 && entry.connected == 1;
}

/// True when the server had a whole packet.
bool server_visit(server_entry& entry, bool may_be_ready, std::time_t now)
{
    const bool has_packet =
        may_be_ready && receive_packet(entry.socket_fd, entry) == packet_complete;
    if (has_packet) {
        entry.last_data_time = now;
        // Taken out first: a packet that closes its own connection must not pull itself away.
        const received_packet packet = packet_take(entry);
        packet_dispatch(entry, *packet);
    }
    idle_rule(entry, now);
    return has_packet;
}

/// What one run of the cycle has done; keys wait as long as it lasts.
struct poll_run {
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    int packets = 0;

    bool is_long() const
    {
        return packets >= packets_before_break &&
               std::chrono::steady_clock::now() - begin >= longest_run;
    }
};

/// Rings when the key loop has had its round.
void break_begin()
{
    const itimerval soon = {{0, 0}, {0, break_us}};
    setitimer(ITIMER_REAL, &soon, nullptr);
}

/// Visits servers from where the cycle stands. False when it was broken off for waiting keys.
bool cycle_continue(poll_progress& cycle)
{
    poll_run run;
    readiness ready = readiness_ask(app_state.servers, cycle.next, is_polled);
    while (cycle.next < app_state.servers->count) {
        server_entry* entry = server_at(app_state.servers, cycle.next);
        const bool may_be_ready = readiness_of(ready, *entry);
        ++cycle.next;
        if (!is_polled(*entry) || !server_visit(*entry, may_be_ready, cycle.now))
            continue;
        ++run.packets;
        if (run.is_long() && cycle.next < app_state.servers->count)
            return false;
    }
    return true;
}

} // namespace

void poll_servers(int)
{
    poll_progress& cycle = app_state.poll;
    if (cycle.next == 0)
        cycle.now = std::time(nullptr);
    if (!cycle_continue(cycle))
        return break_begin();
    cycle.next = 0;
    alarm(poll_interval_s);
}

void packet_dispatch(server_entry& entry, const packet_buffer& packet)
{
    const packet_header header = packet_header_read(packet.header);
    const auto* row = std::ranges::lower_bound(packet_kinds, header.kind, {}, &packet_kind::number);
    if (row == std::end(packet_kinds) || row->number != header.kind)
        return;
    for (int beeps = 0; beeps < row->beeps; ++beeps)
        beep();
    if (row->message != nullptr)
        status_report(row->pair, "%s", row->message);
    if (row->handle != nullptr)
        row->handle(entry, {header, packet.payload, reinterpret_cast<const char*>(packet.payload)});
}

void close_by_server(server_entry& entry)
{
    status_report(colour::error, "Connection closed by server");
    connection_end(entry);
    server_identity_clear(entry);
    server_marker_write(entry.list_row + 1, marker_none);
}

void show_uptime(const char* text)
{
    const heap_text copy{str_dup(text)};
    char* fields[3] = {};
    if (!copy || str_split(copy.get(), fields, 3, "\t") != 3)
        return;
    const long uptime_s = std::strtol(fields[0], nullptr, 10);
    const long clients = std::strtol(fields[1], nullptr, 10);
    status_report(colour::secondary,
                  "Uptime: %d days, %d hours, %d minutes %ld seconds. %d clients connected",
                  static_cast<int>(uptime_s / 86400), static_cast<int>(uptime_s % 86400 / 3600),
                  static_cast<int>(uptime_s % 86400 % 3600 / 60), uptime_s % 86400 % 3600 % 60,
                  static_cast<int>(clients));
}
