// main.cpp - tovriksim, the practice server as a program.
//
// Owns the start, and the end by a signal. The library does everything else.
#include "server/base/line_writer.hpp"
#include "server/practice/practice_server.hpp"
#include "server/tovriksim/command_line.hpp"

#include <clocale>
#include <csignal>
#include <ctime>
#include <exception>
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

/// Serves until a signal ends it.
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
    tovrik::practice_server server{std::move(line.server)};
    if (!server.start()) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        return report_failure(server.error(), status_failed);
    }
    tovrik::line_writer lines{STDOUT_FILENO, "tovriksim"};
    print_places(lines, server, address);
    constexpr timespec pause{.tv_sec = 1, .tv_nsec = 0};
    while (sigtimedwait(&ends, nullptr, &pause) < 0) {
        lines.flush();
        line.errors.flush();
    }
    leave(server, ends);
    server.stop();
    line.errors.flush();
    return 0;
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
