// report.cpp - see report.hpp.
#include "services/report.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/limits.hpp"
#include "base/owners.hpp"
#include "net/decompression.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/report_reception.hpp"
#include "net/server_box.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <ncurses.h>

namespace
{

constexpr int date_size = 12;
constexpr int first_year = 1900;
constexpr int name_margin = 4; // between the prompt for a file name and the terminal's width

/// The moment that stands for a day: one second past midnight. date: begins with the day; month and
/// year may follow after slashes.
std::time_t compute_report_moment(const char* date)
{
    std::tm moment = {};
    moment.tm_sec = 1;
    // Kept on purpose: tm_isdst stays 0, so this is standard time all year round; servers expect
    // that. Test: report_request.daylight_saving_time_is_ignored.
    moment.tm_mday = static_cast<int>(std::strtol(date, nullptr, 10));
    const char* month = std::strchr(date, '/') + 1;
    const char* year = std::strchr(month, '/');
    // Kept on purpose: without a second slash the month does not count either, and both stay 0,
    // which is January 1900; servers have nothing for that day.
    // Test: report_request.a_day_is_sent_as_its_first_second_in_the_local_time.
    if (year != nullptr) {
        moment.tm_mon = static_cast<int>(std::strtol(month, nullptr, 10)) - 1;
        moment.tm_year = static_cast<int>(std::strtol(year + 1, nullptr, 10)) - first_year;
    }
    return std::mktime(&moment);
}

bool is_within(long number, std::int64_t max)
{
    return number >= 0 && number <= max;
}

/// The decimal number between a text's start and `end`; 0 when out of memory.
long read_number_before(const char* text, const char* end)
{
    // Cut off first: strtol would skip the tab as a blank and read the number after it.
    const heap_text cut{strndup(text, static_cast<std::size_t>(end - text))};
    return cut ? std::strtol(cut.get(), nullptr, 10) : 0;
}

void refuse(const char* message)
{
    beep();
    status_report(colour::error, "%s", message);
}

void save_report(server_entry& entry, const char* text)
{
    const heap_text name{server_box_prompt(
        entry, COLS - name_margin, "Save ZOBE Style Report as...", folder_setting(ReportPath))};
    if (!name)
        return;
    unique_file file = file_open(name.get(), file_use::replacing);
    if (!file) {
        beep();
        return status_report(colour::error, "Unable to save report as '%s'", name.get());
    }
    // Kept on purpose: whether the disk took all of it is not checked; the report can be requested
    // again. Test: report.is_reported_as_saved_even_on_a_full_disk.
    std::fputs(text, file.get());
    file.reset();
    status_report(colour::notice, "Report successfully saved as '%s'", name.get());
}

void finish_report(server_entry& entry)
{
    const heap_bytes text =
        decompress_packet(static_cast<const unsigned char*>(entry.report_buffer), entry.report_size,
                          entry.report_received);
    report_reception_drop(entry);
    if (text)
        save_report(entry, reinterpret_cast<const char*>(text.get()));
}

/// Takes a report's announcement: "total TAB size" in decimal. Numbers out of bounds refuse it.
void take_header(server_entry& entry, const char* text)
{
    const char* tab = std::strchr(text, '\t');
    const long size = std::strtol(tab != nullptr ? tab + 1 : text, nullptr, 10);
    const long total = tab != nullptr ? read_number_before(text, tab) : 0;
    if (!is_within(size, report_max_size) || !is_within(total, report_max_total_bytes)) {
        report_reception_drop(entry);
        return status_report(colour::error, "Report refused, its announced size is out of bounds");
    }
    entry.report_size = static_cast<std::uint32_t>(size);
    status_report(colour::notice, "Now receiving ZOBE Style report. Size %d bytes",
                  static_cast<int>(size));
    // Kept on purpose: a number alone is a size; it is reported, and no reception begins.
    // Test: report.drops_unannounced_pieces.
    if (tab != nullptr)
        report_reception_begin(entry, static_cast<std::uint32_t>(total));
}

void take_piece(server_entry& entry, const packet_view& packet)
{
    report_reception_append(entry, packet.payload, packet_payload_length(packet.header));
    if (report_reception_is_complete(entry))
        finish_report(entry);
}

} // namespace

void report_request(server_entry& entry)
{
    const heap_text date{
        prompt_input(date_size, "Date of report (DD/MM/YYYY)", hint_or_cancel, nullptr)};
    if (!date)
        return;
    if (std::strchr(date.get(), '/') == nullptr)
        return refuse("Wrong date format. Please use DD/MM/YYYY");
    server_box_expect(entry);
    send_packet(entry.socket_fd, sent_report_request, 0, 0, "%lld\t*#cnam#\t#cnum#\t0\t0",
                static_cast<long long>(compute_report_moment(date.get())));
}

bool report_reply_opens_box(const server_entry& entry, const packet_view& packet)
{
    return report_reception_ends_with(entry, packet_payload_length(packet.header));
}

void report_reply(server_entry& entry, const packet_view& packet)
{
    switch (packet.header.kind) {
    case received_report_started:
        return status_report(colour::notice, "Report creation process started...");
    case received_report_busy:
        return refuse("All report processes are busy. Try later");
    case received_report_empty:
        return refuse("No messages for the selected date found");
    case received_report_header:
        return take_header(entry, packet.text);
    default:
        return take_piece(entry, packet);
    }
}
