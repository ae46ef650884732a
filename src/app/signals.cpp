// signals.cpp - see signals.hpp.
//
// Only ^X leaves in order; a signal saves nothing, but it always gives the terminal back.
#include "app/signals.hpp"

#include "app/app_state.hpp"
#include "base/signal_door.hpp"
#include "ui/redraw.hpp"
#include "ui/screen.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_type.hpp"

#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <pthread.h>
#include <unistd.h>

namespace
{

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
/// Crashes, and what else ends a program that does not ask for it.
constexpr int crash_signals[] = {SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGABRT,
                                 SIGSYS,  SIGTRAP, SIGXCPU, SIGUSR1, SIGUSR2};

/// What gives the terminal back without any help from curses: prepared while all is well.
struct terminal_rescue {
    char bytes[256];
    std::size_t length;
    bool is_wanted; // curses has the terminal
};
terminal_rescue rescue;

/// Lets the signal have its default effect here and now.
void take_default_action(int signal_number)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    struct sigaction before = {};
    sigaction(signal_number, &standard, &before);
    sigset_t one;
    sigset_t mask_before;
    sigemptyset(&one);
    sigaddset(&one, signal_number);
    raise(signal_number);
    pthread_sigmask(SIG_UNBLOCK, &one, &mask_before);
    pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
    sigaction(signal_number, &before, nullptr);
}

void connect_children_end()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const pid_t child = server_at(app_state.servers, index)->connect_pid;
        if (child > 0)
            kill(child, SIGKILL);
    }
}

/// Leaves the screen without any help from curses; allowed at any moment.
void rescue_write()
{
    signal_silence(SIGTTOU);
    if (write(STDOUT_FILENO, rescue.bytes, rescue.length) < 0) {
        // Nothing else can be done about it here.
    }
}

/// A shell that has taken the terminal back has set its modes; only the screen is still ours.
void terminal_give_back()
{
    if (isendwin())
        return;
    if (terminal_is_lent())
        rescue_write();
    else
        endwin();
}

void on_end(int signal_number)
{
    connect_children_end();
    terminal_give_back();
    take_default_action(signal_number);
}

bool is_pending(int signal_number)
{
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal_number) == 1;
}

/// An end that was asked for while the program was stopped comes before the terminal is taken over:
/// a shell may have it.
void pending_end_take()
{
    for (const int signal_number : ending_signals) {
        if (is_pending(signal_number))
            on_end(signal_number);
    }
}

/// Stops for as long as the shell continues the program without giving it the terminal.
void turn_await()
{
    pending_end_take();
    while (terminal_is_lent()) {
        take_default_action(SIGTTOU);
        pending_end_take();
        // The system takes no request to stop where nobody could continue the program.
        if (!is_pending(SIGCONT))
            return;
    }
}

void on_continue(int)
{
    turn_await();
    screen_resume();
}

void on_stop(int signal_number)
{
    endwin();
    take_default_action(signal_number);
    turn_await();
    shell_modes_note();
    screen_resume();
}

int rescue_byte_add(int byte)
{
    if (rescue.length < sizeof rescue.bytes)
        rescue.bytes[rescue.length++] = static_cast<char>(byte);
    return byte;
}

void rescue_capability_add(terminal_text which)
{
    const char* sequence = terminal_capability(which);
    if (sequence != nullptr)
        terminal_capability_expand(sequence, rescue_byte_add);
}

void rescue_prepare()
{
    rescue.length = 0;
    for (const terminal_text which :
         {terminal_text::attributes_off, terminal_text::first_colours, terminal_text::keypad_off,
          terminal_text::full_screen_off, terminal_text::cursor_on})
        rescue_capability_add(which);
}

void terminal_rescue_run()
{
    if (!rescue.is_wanted)
        return;
    // Curses had taken the screen when it gave its record.
    if (rescue.length == 0 && app_state.terminal != nullptr)
        rescue_prepare();
    rescue_write();
    if (app_state.has_shell_modes && !terminal_is_lent())
        tcsetattr(STDIN_FILENO, TCSANOW, &app_state.shell_modes);
}

[[maybe_unused]] void on_crash(int signal_number)
{
    terminal_rescue_run();
    take_default_action(signal_number);
}

void crash_handlers_install()
{
    // The sanitizers have better handlers of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    struct sigaction action = {};
    action.sa_handler = on_crash;
    for (const int signal_number : crash_signals)
        sigaction(signal_number, &action, nullptr);
#endif
}

bool guards_install()
{
    crash_handlers_install();
    return std::atexit(terminal_rescue_run) == 0;
}

} // namespace

void terminal_guard(bool is_on)
{
    static const bool is_installed = guards_install();
    rescue.is_wanted = is_on && is_installed;
    if (is_on && app_state.terminal != nullptr)
        rescue_prepare();
}

void signals_init()
{
    for (const int signal_number : ending_signals)
        signal_install(signal_number, on_end);
    // A log that cannot be written, a fifo or at its size limit, is an error and not the end.
    signal_silence(SIGPIPE);
    signal_silence(SIGXFSZ);
    signal_install(SIGTSTP, on_stop);
    signal_install(SIGCONT, on_continue);
}
