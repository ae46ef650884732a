// main.cpp - tovriksim, the practice server as a program.
//
// Owns the start, and the end by a signal. The library does everything else.
#include "server/practice/practice_server.hpp"
#include "server/tovriksim/command_line.hpp"

#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>

namespace
{

constexpr int look_every_ms = 50;

void print_places(const tovrik::practice_server& server, const std::string& address)
{
    std::printf("tovriksim: listening on %s:%u\n", address.c_str(), unsigned{server.port()});
    if (server.directory_port() != 0)
        std::printf("tovriksim: directory on %s:%u\n", address.c_str(),
                    unsigned{server.directory_port()});
    if (server.json_port() != 0)
        std::printf("tovriksim: JSON on %s:%u (UDP)\n", address.c_str(),
                    unsigned{server.json_port()});
    std::fflush(stdout);
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
int serve(tovrik::server_options options)
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    // Blocked before the ready line is printed: from that line on, a signal ends the server in
    // order.
    sigprocmask(SIG_BLOCK, &ends, nullptr);

    const std::string address = options.bind_address;
    tovrik::practice_server server{std::move(options)};
    if (!server.start())
        return report_failure(server.error(), status_failed);
    print_places(server, address);
    int number = 0;
    sigwait(&ends, &number);
    leave(server, ends);
    server.stop();
    return 0;
}

int run(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, ""); // what was typed is in the locale's character set
    command_line line;
    if (const auto status = read_command_line(argc, argv, line))
        return *status;
    return serve(std::move(line.server));
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
