// hidden_lines.cpp - see hidden_lines.hpp.
#include "server/tovrikd/hidden_lines.hpp"

#include "base/owners.hpp"
#include "base/retry.hpp"
#include "base/write_all.hpp"
#include "server/base/system_text.hpp"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace tovrik
{
namespace
{

constexpr const char* terminal_path = "/dev/tty";
using block_of_letters = char[256];

/// Holds signals back while it lives; they can be read from its descriptor. One that was read has
/// no other effect.
class held_signals
{
public:
    held_signals()
    {
        sigset_t held;
        sigemptyset(&held);
        // ^Z stops the program after the question, when the terminal shows letters again.
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&held, number);
        arrivals = unique_fd{signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK)};
        sigaddset(&held, SIGTSTP);
        sigprocmask(SIG_BLOCK, &held, &before);
    }
    ~held_signals()
    {
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }
    held_signals(const held_signals&) = delete;
    held_signals& operator=(const held_signals&) = delete;
    int fd() const
    {
        return arrivals.get();
    }
    /// The signal that has come; 0 if none has.
    int take() const
    {
        signalfd_siginfo arrived{};
        const bool is_there = read(fd(), &arrived, sizeof arrived) == sizeof arrived;
        return is_there ? static_cast<int>(arrived.ssi_signo) : 0;
    }

private:
    unique_fd arrivals;
    sigset_t before{};
};

/// A terminal that shows no letters while this lives.
class silent_terminal
{
public:
    explicit silent_terminal(int terminal) : fd(terminal)
    {
        if (tcgetattr(fd, &before) != 0)
            return;
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ICANON | ECHONL;
        // What was typed before the question could be seen, and is dropped.
        is_silent = retry_on_eintr([&] { return tcsetattr(fd, TCSAFLUSH, &silent); }) == 0;
    }
    ~silent_terminal()
    {
        if (is_silent)
            retry_on_eintr([this] { return tcsetattr(fd, TCSANOW, &before); });
    }
    silent_terminal(const silent_terminal&) = delete;
    silent_terminal& operator=(const silent_terminal&) = delete;
    explicit operator bool() const
    {
        return is_silent;
    }

private:
    int fd;
    termios before{};
    bool is_silent = false;
};

/// Waits for letters or a signal. The signal, or 0 once the terminal has something to read.
int wait_for_letters(int terminal, const held_signals& signals)
{
    for (;;) {
        pollfd waiting[] = {{terminal, POLLIN, 0}, {signals.fd(), POLLIN, 0}};
        if (poll(waiting, std::size(waiting), -1) < 0)
            continue;
        if (const int number = signals.take())
            return number;
        if (waiting[0].revents != 0)
            return 0;
    }
}

/// Reads a line into `to`.
void read_line(int terminal, const held_signals& signals, std::size_t max_bytes, hidden_lines& to)
{
    std::string& line = to.typed.emplace_back();
    // Room for what may come, so that no copy of it is left behind.
    line.reserve(max_bytes + sizeof(block_of_letters));
    while (!line.ends_with('\n')) {
        to.signal = wait_for_letters(terminal, signals);
        if (to.signal != 0)
            return;
        block_of_letters block;
        const ssize_t count = retry_on_eintr([&] { return read(terminal, block, sizeof block); });
        if (count > 0)
            line.append(block, static_cast<std::size_t>(count));
        explicit_bzero(block, sizeof block);
        if (count <= 0)
            to.error = "nothing was typed";
        else if (line.size() > max_bytes + 1)
            to.error = "that is too long";
        if (!to.error.empty())
            return;
    }
    line.pop_back();
}

} // namespace

hidden_lines::~hidden_lines()
{
    for (std::string& line : typed)
        explicit_bzero(line.data(), line.size());
}

hidden_lines hidden_lines_ask(const std::vector<std::string>& questions, std::size_t max_bytes,
                              const line_check& check)
{
    hidden_lines lines;
    const unique_fd terminal{open(terminal_path, O_RDWR | O_CLOEXEC | O_NOCTTY)};
    if (!terminal) {
        lines.error = "there is no terminal to ask on";
        return lines;
    }
    const held_signals signals;
    const silent_terminal silent{terminal.get()};
    if (signals.fd() < 0 || !silent) {
        lines.error = system_text("cannot ask on the terminal");
        return lines;
    }
    lines.typed.reserve(questions.size());
    for (const std::string& question : questions) {
        write_all(terminal.get(), question);
        read_line(terminal.get(), signals, max_bytes, lines);
        if (lines.signal == 0 && lines.error.empty())
            lines.error = check(lines.typed.back());
        if (lines.signal != 0 || !lines.error.empty())
            break;
    }
    return lines;
}

} // namespace tovrik
