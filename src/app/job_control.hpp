// job_control.hpp - what happens to the terminal when the program is told to end, stop or continue.
#pragma once

/// Installs the handlers for the signals that end, stop and continue the program. Call once, before
/// curses is started: curses ignores a free SIGTSTP while it draws, which would lose a request to
/// stop that comes at that moment.
void job_control_init();
