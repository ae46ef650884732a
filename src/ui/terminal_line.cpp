// terminal_line.cpp - see terminal_line.hpp.
#include "ui/terminal_line.hpp"

#include "app/app_state.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{

/// The descriptor by which curses sets modes.
int find_line()
{
    return isatty(STDOUT_FILENO) != 0 ? STDOUT_FILENO : STDERR_FILENO;
}

} // namespace

line_state terminal_line_state()
{
    pollfd sides[] = {{STDIN_FILENO, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    if (poll(sides, 2, 0) <= 0)
        return line_state::quiet;
    // What was typed before the other end went away is read first.
    if ((sides[0].revents & POLLIN) == 0)
        return line_state::gone;
    int bytes = 0;
    const bool is_typed = ioctl(STDIN_FILENO, FIONREAD, &bytes) == 0 && bytes > 0;
    return is_typed ? line_state::typed : line_state::ready;
}

bool terminal_is_lent()
{
    const pid_t holder = tcgetpgrp(STDIN_FILENO);
    return holder > 0 && holder != getpgrp();
}

void terminal_wait_for_turn()
{
    // Like everything that touches the line, this stops a job that was not given the terminal.
    tcdrain(STDIN_FILENO);
}

void terminal_modes_note()
{
    app_state.has_shell_modes = tcgetattr(find_line(), &app_state.shell_modes) == 0;
    app_state.has_line = app_state.has_shell_modes;
}

void terminal_modes_complete()
{
    if (tcgetattr(find_line(), &app_state.client_modes) != 0)
        return;
    app_state.client_modes.c_iflag &= ~static_cast<tcflag_t>(IXON);
    terminal_modes_take();
}

void terminal_modes_take()
{
    if (!app_state.has_shell_modes)
        return;
    app_state.has_line = true;
    tcsetattr(find_line(), TCSANOW, &app_state.client_modes);
}

void terminal_modes_give_back()
{
    if (std::exchange(app_state.has_line, false))
        tcsetattr(find_line(), TCSANOW, &app_state.shell_modes);
}
