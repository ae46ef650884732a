// terminal_line.cpp - see terminal_line.hpp.
#include "ui/terminal_line.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

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
