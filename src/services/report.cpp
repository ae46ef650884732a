// report.cpp - see report.hpp.
#include "services/report.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/limits.hpp"
#include "base/owners.hpp"
#include "net/connection.hpp"
#include "net/packet_input.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <ncurses.h>

namespace
{

constexpr int date_room = 12;
constexpr int first_year = 1900;

/// The moment that stands for a day: one second past midnight, local standard time. date: begins
/// with the day; month and year may follow after slashes, else they are January 1900.
std::time_t report_moment(const char* date)
{
    std::tm moment = {};
    moment.tm_sec = 1;
    moment.tm_mday = static_cast<int>(std::strtol(date, nullptr, 10));
    const char* month = std::strchr(date, '/') + 1;
    const char* year = std::strchr(month, '/');
    if (year != nullptr) {
        moment.tm_mon = static_cast<int>(std::strtol(month, nullptr, 10)) - 1;
        moment.tm_year = static_cast<int>(std::strtol(year + 1, nullptr, 10)) - first_year;
    }
    return std::mktime(&moment);
}

bool is_within(long number, std::int64_t most)
{
    return number >= 0 && number <= most;
}

/// The decimal number between a text's start and its end at `end`; 0 when memory is short.
long number_before(const char* text, const char* end)
{
    // Cut off first, or a tab would be skipped as a blank before the next number.
    const heap_text cut{strndup(text, static_cast<std::size_t>(end - text))};
    return cut ? std::strtol(cut.get(), nullptr, 10) : 0;
}

void report_save(const char* text)
{
    const heap_text name{prompt_input(COLS - 4, "Save ZOBE Style Report as...", hint_or_cancel,
                                      folder_setting(ReportPath))};
    if (!name)
        return;
    unique_file file = file_open(name.get(), file_use::replacing);
    if (!file) {
        beep();
        return status_report(colour::error, "Unable to save report as '%s'", name.get());
    }
    std::fputs(text, file.get());
    file.reset();
    status_report(colour::notice, "Report successfully saved as '%s'", name.get());
}

void report_finish(server_entry& entry)
{
    const heap_bytes text =
        decompress_packet(static_cast<const unsigned char*>(entry.report_buffer), entry.report_size,
                          entry.report_received);
    report_reception_drop(entry);
    if (text)
        report_save(reinterpret_cast<const char*>(text.get()));
}

} // namespace

void report_request(server_entry& entry)
{
    const heap_text date{
        prompt_input(date_room, "Date of report (DD/MM/YYYY)", hint_or_cancel, nullptr)};
    if (!date)
        return;
    if (std::strchr(date.get(), '/') == nullptr) {
        beep();
        return status_report(colour::error, "Wrong date format. Please use DD/MM/YYYY");
    }
    send_packet(entry.socket_fd, packet_report_request, 0, 0, "%ld\t*#cnam#\t#cnum#\t0\t0",
                static_cast<long>(report_moment(date.get())));
}

void report_header(server_entry& entry, const char* text)
{
    const char* tab = std::strchr(text, '\t');
    const long size = std::strtol(tab != nullptr ? tab + 1 : text, nullptr, 10);
    const long total = tab != nullptr ? number_before(text, tab) : 0;
    if (!is_within(size, report_max_size) || !is_within(total, report_max_total_bytes)) {
        report_reception_drop(entry);
        return status_report(colour::error, "Report refused, its announced size is out of bounds");
    }
    entry.report_size = static_cast<std::uint32_t>(size);
    status_report(colour::notice, "Now receiving ZOBE Style report. Size %d bytes",
                  static_cast<int>(size));
    if (tab == nullptr)
        return;
    report_reception_drop(entry);
    entry.report_total = static_cast<std::uint32_t>(total);
    entry.report_buffer = std::calloc(static_cast<std::size_t>(total) + 1, 1);
}

void report_piece(server_entry& entry, const unsigned char* bytes, std::size_t length)
{
    if (entry.report_buffer == nullptr)
        return;
    const std::size_t room = entry.report_total - entry.report_received;
    const std::size_t taken = std::min(length, room);
    std::memcpy(static_cast<unsigned char*>(entry.report_buffer) + entry.report_received, bytes,
                taken);
    entry.report_received += static_cast<std::uint32_t>(taken);
    if (entry.report_received == entry.report_total)
        report_finish(entry);
}
