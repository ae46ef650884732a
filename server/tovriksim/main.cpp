// main.cpp - tovriksim, the practice server as a program.
//
// Owns the start, and the end by a signal. The library does everything else.
#include "server/base/clock.hpp"
#include "server/base/line_writer.hpp"
#include "server/practice/practice_server.hpp"
#include "server/tovriksim/command_line.hpp"

#include <chrono>
#include <clocale>
#include <csignal>
#include <ctime>
#include <exception>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int look_every_ms = 50;

/// Says where the server listens. A terminal that is stopped gets the lines when it is continued.
void print_places(tovrik::line_writer& lines, const tovrik::practice_server& server,
                  const std::string& address)
{
    const auto print = [&lines](const std::string& what) {
        lines.put(what, tovrik::line_level::info);
    };
    print("listening on " + address + ":" + std::to_string(server.port()));
    if (server.directory_port() != 0)
        print("directory on " + address + ":" + std::to_string(server.directory_port()));
    if (server.json_port() != 0)
        print("JSON on " + address + ":" + std::to_string(server.json_port()) + " (UDP)");
}

/// Says good-bye, and waits until the clients have read it. Another of the signals ends that.
void leave(tovrik::practice_server& server, const sigset_t& ends)
{
    constexpr timespec pause{.tv_sec = 0, .tv_nsec = look_every_ms * 1'000'000L};
    server.leave();
    while (!server.is_alone() && sigtimedwait(&ends, nullptr, &pause) < 0) {
    }
}

void report_end(command_line& line, const tovrik::json_end& end)
{
    const std::string name = line.json_path == "-" ? "standard input" : line.json_path;
    std::string text = name + " has ended";
    if (!end.error.empty())
        text += ": " + end.error;
    if (end.broken_lines > 0)
        text += "; broken lines: " + std::to_string(end.broken_lines);
    line.errors.put(text, tovrik::line_level::notice);
}

/// Waits for the end: a signal, or that of the only stream of messages, once the clients have been
/// sent what waits or have had the time for it. Returns the exit status.
int wait_for_end(command_line& line, tovrik::line_writer& lines,
                 const tovrik::practice_server& server, const sigset_t& ends,
                 std::chrono::milliseconds sending_limit)
{
    constexpr timespec pause{.tv_sec = 1, .tv_nsec = 0};
    std::optional<tovrik::json_end> end;
    auto send_until = tovrik::never;
    while (sigtimedwait(&ends, nullptr, &pause) < 0) {
        lines.flush();
        line.errors.flush();
        const auto now = tovrik::steady_clock::now();
        if (!end && (end = server.json_stream_end())) {
            report_end(line, *end);
            send_until = now + sending_limit;
        }
        if (end && line.ends_with_stream && (!server.has_waiting_packets() || now >= send_until))
            return end->broken_lines == 0 && end->error.empty() ? 0 : status_broken_input;
    }
    return 0;
}

/// Serves until its end. Returns the exit status.
int serve(command_line& line)
{
    sigset_t ends;
    sigset_t before;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    // Blocked before the ready line is printed: from that line on, a signal ends the server in
    // order.
    sigprocmask(SIG_BLOCK, &ends, &before);
    std::signal(SIGPIPE, SIG_IGN);

    const std::string address = line.server.bind_address;
    // As long as a full queue takes.
    const std::chrono::milliseconds sending_limit{line.server.pace_ms *
                                                  static_cast<long>(line.server.queue_limit + 1)};
    tovrik::practice_server server{std::move(line.server)};
    if (!server.start()) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        return report_failure(server.error(), status_failed);
    }
    tovrik::line_writer lines{STDOUT_FILENO, "tovriksim"};
    print_places(lines, server, address);
    const int status = wait_for_end(line, lines, server, ends, sending_limit);
    leave(server, ends);
    server.stop();
    line.errors.flush();
    return status;
}

int run(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, ""); // what was typed is in the locale's character set
    command_line line;
    if (const auto status = read_command_line(argc, argv, line))
        return *status;
    return serve(line);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        return report_failure(failure.what(), status_failed);
    }
}
