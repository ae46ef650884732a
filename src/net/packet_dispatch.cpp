// packet_dispatch.cpp - see packet_dispatch.hpp.
#include "net/packet_dispatch.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/owned_text.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "net/capabilities.hpp"
#include "net/connection_end.hpp"
#include "net/decompression.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/server_box.hpp"
#include "net/transmission.hpp"
#include "services/pager_list.hpp"
#include "services/report.hpp"
#include "ui/layout.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <string_view>
#include <utility>

namespace
{

constexpr int uptime_fields = 3;
constexpr long minute_s = 60;
constexpr long hour_s = 60 * minute_s;
constexpr long day_s = 24 * hour_s;

void take_closing(server_entry& entry, const packet_view&)
{
    close_by_server(entry);
}

/// Turns the server's marker, except while the settings page covers it.
void turn_marker(server_entry& entry, const packet_view&)
{
    if (app_state.settings_shown != 0)
        return;
    const std::int32_t row = entry.list_row + 1;
    // Kept on purpose: the marker has only these two positions; users know it like that.
    // Test: dispatch.turns_the_marker_with_every_tick.
    server_marker_write(row, server_marker_read(row) == '-' ? '/' : '-');
}

void switch_crc_on(server_entry& entry, const packet_view&)
{
    entry.crc_check = 1;
}

void switch_crc_off(server_entry& entry, const packet_view&)
{
    entry.crc_check = 0;
}

void announce_replay(server_entry&, const packet_view& packet)
{
    const std::uint32_t count = packet.header.param1 | std::uint32_t{packet.header.param2} << 16;
    status_report(colour::notice, "Now receiving the last %u transmissions", count);
}

void show_transmission(server_entry& entry, const packet_view& packet)
{
    const xml_document document{xml_parse(packet.text)};
    present_transmission(entry, document.get());
}

void show_compressed_transmission(server_entry& entry, const packet_view& packet)
{
    const heap_bytes text = decompress_packet(packet.payload, packet.header.extra,
                                              packet_payload_length(packet.header));
    if (!text)
        return;
    const xml_document document{xml_parse(reinterpret_cast<const char*>(text.get()))};
    present_transmission(entry, document.get());
}

bool may_ask_password(const server_entry& entry, const packet_view& packet)
{
    return capabilities_open_box(entry, packet.text);
}

void take_capabilities(server_entry& entry, const packet_view& packet)
{
    handle_capabilities(entry, packet.text);
}

/// The first line of a text, which is cut off it.
std::string_view take_line(std::string_view& text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

/// Whether the lines after one push it out of the status pane without a trace. A line that is wider
/// than the pane changes its frame, and what is above.
bool is_pushed_out(std::string_view line, std::string_view rest)
{
    const int width = layout_status_frame_column() - status_column;
    for (int row = status_row; std::cmp_less_equal(line.size(), width); --row) {
        if (row < status_first_row)
            return true;
        if (rest.empty())
            return false;
        line = take_line(rest);
    }
    return false;
}

/// Shows a text line by line. Lines that would be pushed out again are left out: there may be
/// thousands.
void show_server_text(server_entry&, const packet_view& packet)
{
    if (std::string_view{packet.text}.find('\n') == std::string_view::npos)
        return status_report(colour::server_text, "%s", packet.text);
    // Kept on purpose: this halves empty lines and does not remove them; servers lay out their
    // texts for it. Test: dispatch.prints_texts_of_several_lines_line_by_line.
    const heap_text text{str_replace(str_dup(packet.text), "\n\n", "\n")};
    if (!text)
        return;
    for (std::string_view rest = text.get(); !rest.empty();) {
        const std::string_view line = take_line(rest);
        if (!is_pushed_out(line, rest))
            status_report(colour::server_text, "%.*s", static_cast<int>(line.size()), line.data());
    }
}

void forget_password(server_entry& entry, const packet_view&)
{
    owned_text_clear(entry.Password);
}

void answer_identification(server_entry& entry, const packet_view&)
{
    send_packet(entry.socket_fd, sent_identification, 0, 0, "ncursesclient");
}

void show_notice(server_entry&, const packet_view& packet)
{
    status_report(colour::text, "%s", packet.text);
}

void show_error_text(server_entry&, const packet_view& packet)
{
    status_report(colour::error, "%s", packet.text);
}

void show_still_connected(server_entry& entry, const packet_view&)
{
    status_report(colour::notice, "You are still connected to %s", server_display_name(entry));
}

bool may_show_list(const server_entry&, const packet_view&)
{
    return true;
}

void show_pager_list(server_entry& entry, const packet_view& packet)
{
    if (!server_box_may_open(entry, std::time(nullptr)))
        return;
    const bool is_closed_by_user = pager_list_show(packet.text);
    server_box_closed(entry, is_closed_by_user, std::time(nullptr));
}

/// Shows how long a server has been up and how many clients it has.
void show_uptime(server_entry&, const packet_view& packet)
{
    const heap_text copy{str_dup(packet.text)};
    char* fields[uptime_fields] = {};
    // Kept on purpose: the third field must be there, although nothing looks at it; servers send
    // it. Test: dispatch.shows_the_uptime_of_a_server.
    if (!copy || str_split(copy.get(), fields, uptime_fields, "\t") != uptime_fields)
        return;
    const long uptime_s = std::strtol(fields[0], nullptr, 10);
    const long clients = std::strtol(fields[1], nullptr, 10);
    status_report(colour::secondary,
                  "Uptime: %d days, %d hours, %d minutes %ld seconds. %d clients connected",
                  static_cast<int>(uptime_s / day_s), static_cast<int>(uptime_s % day_s / hour_s),
                  static_cast<int>(uptime_s % hour_s / minute_s), uptime_s % minute_s,
                  static_cast<int>(clients));
}

void give_beeps(int count)
{
    for (; count > 0; --count)
        beep();
}

/// What the client does about one kind of packet: beeps, then reports the message, then calls the
/// handler.
struct packet_rule {
    received_packet_kind kind;
    int beeps = 0;
    int beeps_after_message = 0;
    colour pair = colour::text;    // of the message
    const char* message = nullptr; // null: none of its own
    void (*handle)(server_entry& entry, const packet_view& packet) = nullptr; // null: nothing
    bool (*opens_box)(const server_entry& entry, const packet_view& packet) = nullptr; // null: no
};

/// Ascending by kind, for a binary search.
constexpr packet_rule packet_rules[] = {
    {.kind = received_closing, .handle = take_closing},
    {.kind = received_tick, .handle = turn_marker},
    {.kind = received_crc_on, .handle = switch_crc_on},
    {.kind = received_crc_off, .handle = switch_crc_off},
    {.kind = received_replay, .handle = announce_replay},
    {.kind = received_update_accepted,
     .pair = colour::success,
     .message = "Your update request was successfully added"},
    {.kind = received_update_refused,
     .beeps = 1,
     .pair = colour::error,
     .message = "Your update request could not be added"},
    {.kind = received_transmission, .handle = show_transmission},
    {.kind = received_capabilities, .handle = take_capabilities, .opens_box = may_ask_password},
    {.kind = received_server_text, .handle = show_server_text},
    {.kind = received_report_started, .handle = report_reply},
    {.kind = received_report_busy, .handle = report_reply},
    {.kind = received_report_empty, .handle = report_reply},
    {.kind = received_report_header, .handle = report_reply},
    {.kind = received_pager_busy,
     .beeps = 1,
     .pair = colour::error,
     .message = "Pager process is blocked. Please try later"},
    {.kind = received_pager_done,
     .pair = colour::success,
     .message = "Your Pager Request was successfully added/removed"},
    {.kind = received_pager_failed,
     .beeps = 1,
     .pair = colour::error,
     .message = "Your Pager Request could not be added/removed"},
    {.kind = received_password_accepted,
     .beeps_after_message = 1,
     .pair = colour::success,
     .message = "Password accepted. MessageAccess granted"},
    {.kind = received_password_refused,
     .beeps_after_message = 1,
     .pair = colour::error,
     .message = "Your password doesnt match. MessageAccess denied",
     .handle = forget_password},
    {.kind = received_identification_request,
     .pair = colour::secondary,
     .message = "Answering identification request...",
     .handle = answer_identification},
    {.kind = received_identification_accepted,
     .pair = colour::secondary,
     .message = "Client identified. Access granted"},
    {.kind = received_identification_refused,
     .pair = colour::error,
     .message = "Identification unknown. Client rejected"},
    {.kind = received_pager_list, .handle = show_pager_list, .opens_box = may_show_list},
    {.kind = received_news, .handle = show_server_text},
    {.kind = received_closing_for_maintenance, .handle = take_closing},
    {.kind = received_closing_when_full, .handle = take_closing},
    {.kind = received_notice, .handle = show_notice},
    {.kind = received_updates_forbidden,
     .beeps = 1,
     .pair = colour::error,
     .message = "Updates on this database are not allowed"},
    {.kind = received_error_text, .beeps = 1, .handle = show_error_text},
    {.kind = received_still_connected, .beeps = 3, .handle = show_still_connected},
    {.kind = received_uptime, .handle = show_uptime},
    {.kind = received_compressed_transmission, .handle = show_compressed_transmission},
    {.kind = received_report_piece, .handle = report_reply, .opens_box = report_reply_opens_box},
};
static_assert(std::ranges::is_sorted(packet_rules, {}, &packet_rule::kind));

/// Null for unknown kinds.
const packet_rule* find_rule(std::uint32_t kind)
{
    const auto* rule = std::ranges::lower_bound(packet_rules, kind, {}, &packet_rule::kind);
    return rule != std::end(packet_rules) && rule->kind == kind ? rule : nullptr;
}

packet_view view_of(const packet_buffer& packet)
{
    return {packet_header_read(packet.header), packet.payload,
            reinterpret_cast<const char*>(packet.payload)};
}

} // namespace

bool packet_opens_box(const server_entry& entry, const packet_buffer& packet)
{
    const packet_view view = view_of(packet);
    const packet_rule* rule = find_rule(view.header.kind);
    return rule != nullptr && rule->opens_box != nullptr && rule->opens_box(entry, view);
}

void packet_dispatch(server_entry& entry, const packet_buffer& packet)
{
    const packet_view view = view_of(packet);
    const packet_rule* rule = find_rule(view.header.kind);
    if (rule == nullptr)
        return;
    give_beeps(rule->beeps);
    if (rule->message != nullptr)
        status_report(rule->pair, "%s", rule->message);
    give_beeps(rule->beeps_after_message);
    if (rule->handle != nullptr)
        rule->handle(entry, view);
}
