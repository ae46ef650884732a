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
    std::printf("tovriksim: listening on %s:%u\n", address.c_str(), unsigned{server.port()});
    if (server.directory_port() != 0)
        std::printf("tovriksim: directory on %s:%u\n", address.c_str(),
                    unsigned{server.directory_port()});
    if (server.json_port() != 0)
        std::printf("tovriksim: JSON on %s:%u (UDP)\n", address.c_str(),
                    unsigned{server.json_port()});
    std::fflush(stdout);
    int number = 0;
    sigwait(&ends, &number);
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
