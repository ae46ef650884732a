// main.cpp - tovrikd as a program: its signals, and the one loop that everything runs in.
#include "server/base/utf8_text.hpp"
#include "server/tovrikd/command_line.hpp"
#include "server/tovrikd/daemon_life.hpp"
#include "server/tovrikd/exit_status.hpp"
#include "server/tovrikd/service_manager.hpp"

#include <algorithm>
#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iterator>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace
{

/// How long clients may take to read that the server ends.
constexpr std::chrono::seconds good_bye_patience{5};

/// Allows for as many open files as the largest number of clients needs; the usual limit is 1024.
void raise_file_limit()
{
    constexpr rlim_t wanted = 8192;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= wanted)
        return;
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
}

/// The signals that the loop reads instead of being interrupted by them. They are blocked from the
/// start, so that none is lost.
unique_fd open_signals()
{
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        sigaddset(&watched, number);
    }
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGCHLD, SIG_DFL); // if it is ignored, nobody can tell how the mail program has ended
    return unique_fd{signalfd(-1, &watched, SFD_NONBLOCK | SFD_CLOEXEC)};
}

/// The next signal that came; 0 if there is none.
int take_signal(int signals)
{
    signalfd_siginfo taken{};
    return read(signals, &taken, sizeof taken) == ssize_t{sizeof taken}
               ? static_cast<int>(taken.ssi_signo)
               : 0;
}

/// One turn: waits for events and handles them, and all that is due. True if signals came.
bool take_turn(tovrik::daemon& running, int signals, int wait_ms)
{
    std::array<epoll_event, 64> events;
    const int count = epoll_wait(running.server.epoll.get(), events.data(),
                                 static_cast<int>(events.size()), wait_ms);
    bool is_signalled = false;
    for (int i = 0; i < count; ++i) {
        const int fd = events[static_cast<std::size_t>(i)].data.fd;
        is_signalled = is_signalled || fd == signals;
        if (fd != signals)
            daemon_on_event(running, fd, tovrik::steady_clock::now());
    }
    daemon_on_time(running, tovrik::steady_clock::now());
    return is_signalled;
}

/// Reloads at SIGHUP, unless the server is ending. True at a signal that ends it.
bool answer_signals(tovrik::daemon& running, int signals, bool is_ending = false)
{
    bool is_ended = false;
    while (const int number = take_signal(signals)) {
        if (number != SIGHUP) {
            is_ended = true;
            continue;
        }
        if (is_ending)
            continue;
        tovrik::service_manager_tell_reloading();
        daemon_reload(running, tovrik::steady_clock::now());
        tovrik::service_manager_tell_ready();
    }
    return is_ended;
}

/// Serves until a signal ends it; then until all clients have read so, or for some seconds, or
/// until another such signal.
void serve(tovrik::daemon& running, int signals)
{
    bool is_ended = false;
    while (!is_ended) {
        const int wait_ms = daemon_wait_ms(running, tovrik::steady_clock::now());
        is_ended = take_turn(running, signals, wait_ms) && answer_signals(running, signals);
    }
    tovrik::service_manager_tell_stopping();
    daemon_say_good_bye(running);
    const auto end = tovrik::steady_clock::now() + good_bye_patience;
    constexpr int short_wait_ms = 50;
    is_ended = false;
    while (!is_ended && !daemon_is_done(running) && tovrik::steady_clock::now() < end) {
        is_ended =
            take_turn(running, signals, short_wait_ms) && answer_signals(running, signals, true);
    }
}

int run(const tovrik::tovrikd_options& options)
{
    raise_file_limit();
    const unique_fd signals = open_signals();
    tovrik::line_writer journal{STDERR_FILENO, "tovrikd"};
    tovrik::daemon running{journal};
    const auto failure = daemon_open(running, options.configuration_path);
    if (!failure.lines.empty())
        return tovrik::exit_complaining(failure.lines, failure.is_configuration
                                                           ? tovrik::status_bad_usage
                                                           : tovrik::status_failed);
    if (!signals ||
        !tovrik::watch(running.server.epoll.get(), EPOLL_CTL_ADD, signals.get(), EPOLLIN))
        return tovrik::exit_complaining({"cannot wait for signals"}, tovrik::status_failed);
    for (const tovrik::channel& each : running.server.channels) {
        journal.put(tovrik::utf8_of_latin1(each.name) + " listens on port " +
                        std::to_string(each.listener.port),
                    tovrik::line_level::info);
    }
    if (running.web.port() != 0)
        journal.put("the web is answered on port " + std::to_string(running.web.port()),
                    tovrik::line_level::info);
    tovrik::service_manager_tell_ready();
    serve(running, signals.get());
    daemon_close(running);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::setlocale(LC_CTYPE, "");
        tovrik::tovrikd_options options;
        const auto status = tovrik::read_tovrikd_options(argc, argv, options);
        return status ? *status : run(options);
    } catch (const std::exception& failure) {
        return tovrik::exit_complaining({failure.what()}, tovrik::status_failed);
    }
}
