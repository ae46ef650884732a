// job_control.cpp - see job_control.hpp.
//
// Only ^X leaves in order; a signal saves nothing, but it always gives the terminal back.
#include "app/job_control.hpp"

#include "app/app_state.hpp"
#include "base/signal_door.hpp"
#include "ui/screen.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_rescue.hpp"

#include <csignal>
#include <ctime>

namespace
{

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

void end_connect_children()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const pid_t child = server_at(app_state.servers, index)->connect_pid;
        if (child > 0)
            kill(child, SIGKILL);
    }
}

/// A shell that has taken the terminal back has set its modes; only the screen is still ours.
void give_terminal_back()
{
    if (!terminal_is_lent())
        return screen_suspend();
    // Writing must not stop a program that is told to end.
    signal_silence(SIGTTOU);
    if (!isendwin())
        terminal_rescue_write();
}

void on_end(int signal_number)
{
    end_connect_children();
    give_terminal_back();
    signal_take_default(signal_number);
}

bool is_pending(int signal_number)
{
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal_number) == 1;
}

/// If the program was told to end while it was stopped, it ends before it takes the terminal over:
/// a shell may have it.
void take_pending_end()
{
    for (const int signal_number : ending_signals) {
        if (is_pending(signal_number))
            on_end(signal_number);
    }
}

/// A stop's handler answers the SIGCONT that ended the stop. Left pending, it would have the whole
/// screen drawn a second time.
void drop_pending_continue()
{
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, SIGCONT);
    const timespec at_once = {};
    sigtimedwait(&only, nullptr, &at_once);
}

/// Stops again as long as the shell continues the program without giving it the terminal.
void wait_for_terminal()
{
    take_pending_end();
    while (terminal_is_lent()) {
        drop_pending_continue();
        signal_take_default(SIGTTOU);
        take_pending_end();
        // The system ignores a request to stop if nobody could continue the program.
        if (!is_pending(SIGCONT))
            return;
    }
}

/// Whether the terminal is no longer ours: in the last phase, while a fetch is waited for.
bool has_left_terminal()
{
    return app_state.terminal == nullptr;
}

void on_continue(int)
{
    if (has_left_terminal())
        return;
    wait_for_terminal();
    screen_resume();
}

void on_stop(int signal_number)
{
    if (has_left_terminal())
        return signal_take_default(signal_number);
    screen_suspend();
    // The stop may be over already: when a script's shell has taken the terminal back first,
    // setting its modes stopped the program, until the shell gave it the terminal again.
    if (!is_pending(SIGCONT))
        signal_take_default(signal_number);
    wait_for_terminal();
    drop_pending_continue();
    shell_modes_note();
    screen_resume();
}

} // namespace

void job_control_init()
{
    for (const int signal_number : ending_signals)
        signal_install(signal_number, on_end);
    // Writing a log to a fifo or beyond a size limit must be an error, not the end of the program.
    signal_silence(SIGPIPE);
    signal_silence(SIGXFSZ);
    signal_install(SIGTSTP, on_stop);
    signal_install(SIGCONT, on_continue);
}
