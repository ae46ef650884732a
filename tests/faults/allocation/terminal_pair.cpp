// terminal_pair.cpp - see terminal_pair.hpp.
#include "faults/allocation/terminal_pair.hpp"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr winsize usual_size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
constexpr std::string_view end_mark = "\033]end of the run\a";
constexpr int mark_wait_ms = 10'000;

} // namespace

terminal_pair::terminal_pair()
{
    int screen_end = -1;
    int program_end = -1;
    if (openpty(&screen_end, &program_end, nullptr, nullptr, &usual_size) != 0) {
        std::perror("cannot open a pseudo-terminal");
        std::abort();
    }
    std::fflush(stdout);
    dup2(program_end, STDIN_FILENO);
    dup2(program_end, STDOUT_FILENO);
    close(program_end);
    fcntl(screen_end, F_SETFL, O_NONBLOCK);
    screen = unique_fd{screen_end};
}

void terminal_pair::drain(std::string& output) const
{
    char bytes[16384];
    for (ssize_t count; (count = read(screen.get(), bytes, sizeof bytes)) > 0;)
        output.append(bytes, static_cast<std::size_t>(count));
}

void terminal_pair::drain_whole(std::string& output) const
{
    static_cast<void>(!write(STDOUT_FILENO, end_mark.data(), end_mark.size()));
    pollfd watched = {screen.get(), POLLIN, 0};
    while (!output.ends_with(end_mark) && poll(&watched, 1, mark_wait_ms) > 0)
        drain(output);
    if (output.ends_with(end_mark))
        output.erase(output.size() - end_mark.size());
}

void terminal_pair::restore(const termios& modes) const
{
    tcsetattr(STDIN_FILENO, TCSANOW, &modes);
    tcflush(STDIN_FILENO, TCIFLUSH);
    ioctl(STDOUT_FILENO, TIOCSWINSZ, &usual_size);
}

termios terminal_pair::modes() const
{
    termios found = {};
    tcgetattr(STDIN_FILENO, &found);
    return found;
}
