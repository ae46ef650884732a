// scenario_run.cpp - see scenario_run.hpp.
#include "faults/allocation/scenario_run.hpp"

#include "app/app_state.hpp"
#include "app/start_stop.hpp"
#include "faults/allocation/leak_search.hpp"
#include "ui/screen.hpp"

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace
{

constexpr const char* notice_text = "memory is there again";
constexpr std::size_t notice_server = 1;

run_report* leaks_reported = nullptr;

void on_leak(const live_block& block, const block_origin& origin)
{
    if (leaks_reported->leak_count < reported_leaks)
        leaks_reported->leaks[leaks_reported->leak_count] = {block.size_bytes, origin};
    ++leaks_reported->leak_count;
}

bool is_connected(std::size_t index)
{
    const server_entry* entry = rig_entry(index);
    return entry != nullptr && entry->socket_fd > 0 && entry->connected == 1;
}

/// A notice from that server must reach the status pane.
void check_notice(const client_rig& rig, std::size_t index, run_report& report)
{
    static constexpr unsigned char header[] = {103, 0, 0, 0, 21, 0, 0, 0, 0, 0, 0, 0};
    char bytes[64];
    std::copy_n(header, sizeof header, bytes);
    std::copy_n(notice_text, std::strlen(notice_text), bytes + sizeof header);
    rig_send(rig, index, {bytes, sizeof header + std::strlen(notice_text)});
    if (!rig_wait_for_status(notice_text))
        run_complain(report, "server %zu is not heard any more", index);
}

void check_windows(run_report& report)
{
    // What a resize could not create, the next resize creates.
    if (app_state.key_line == nullptr)
        rig_resize(24, 80);
    for (const WINDOW* window :
         {app_state.status_pane, app_state.server_pane, app_state.message_pane, app_state.key_line,
          app_state.settings_win, app_state.help_win}) {
        if (window == nullptr)
            run_complain(report, "a window is missing");
    }
}

void check_first_server(const client_rig& rig, run_report& report)
{
    if (is_connected(0))
        check_notice(rig, 0, report);
    else
        run_complain(report, "the first server's connection is lost");
}

/// With memory again, the client must go on as if nothing had happened.
void check_client(client_rig& rig, const scenario& which, run_report& report)
{
    app_state.settings_shown = 0;
    app_state.help_shown = 0;
    check_windows(report);
    if (which.stage == rig_stage::connected && which.keeps_first)
        check_first_server(rig, report);
    if (which.stage == rig_stage::connected && which.keeps_second && !is_connected(notice_server))
        run_complain(report, "the second server's connection is lost");
    if (!rig_is_configured(rig, notice_server))
        return;
    if (!is_connected(notice_server) && !rig_connect(rig, notice_server))
        return run_complain(report, "the second server cannot be connected");
    check_notice(rig, notice_server, report);
}

void check_terminal(const termios& shell_modes, run_report& report)
{
    termios found = {};
    tcgetattr(STDIN_FILENO, &found);
    if (std::memcmp(&found, &shell_modes, sizeof found) != 0)
        run_complain(report, "the terminal's modes are not restored");
}

/// What only the client's record points to is lost too: the program has ended.
void check_leaks(run_report& report)
{
    rig_threads_wait();
    std::destroy_at(&app_state);
    std::construct_at(&app_state);
    leaks_reported = &report;
    leaks_search(on_leak);
}

bool is_running()
{
    return app_state.servers != nullptr;
}

/// Curses keeps what a failed window has left, and so does the terminal.
bool is_left_open(const run_report& report)
{
    return !report.has_started && app_state.terminal != nullptr;
}

} // namespace

void run_complain(run_report& report, const char* format, ...)
{
    const std::size_t length = std::strlen(report.complaints);
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(report.complaints + length, reported_text_bytes - length - 1, format, arguments);
    va_end(arguments);
    const std::size_t end = std::strlen(report.complaints);
    std::snprintf(report.complaints + end, reported_text_bytes - end, "; ");
}

void scenario_run(client_rig& rig, const scenario& which, failure_plan plan, long nth,
                  const termios& shell_modes, run_report& report) noexcept
{
    allocations_are_clients(true);
    // Each run has its own connections: shutting one down affects everybody who shares it.
    if (which.stage == rig_stage::connected)
        rig_join(rig);
    if (which.prepare != nullptr)
        which.prepare(rig);
    allocations_note_failures(report.failures, reported_failures, report.failure_count);
    allocations_arm(plan, nth);
    report.has_started = which.act(rig, which);
    report.counted = allocations_disarm();
    report.has_failed = allocations_have_failed();
    if (report.has_started && is_running()) {
        check_client(rig, which, report);
        app_shutdown();
    }
    allocations_are_clients(false);
    if (!is_left_open(report)) {
        check_terminal(shell_modes, report);
        check_leaks(report);
    }
    report.is_over = true;
    _exit(report.has_started ? 0 : start_failed_status);
}
