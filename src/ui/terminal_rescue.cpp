// terminal_rescue.cpp - see terminal_rescue.hpp.
#include "ui/terminal_rescue.hpp"

#include "base/signal_door.hpp"
#include "ui/terminal_line.hpp"
#include "ui/terminal_output.hpp"
#include "ui/terminal_type.hpp"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace
{

/// Crashes, and other signals that end a program which did not ask for them.
constexpr int crash_signals[] = {SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGABRT,
                                 SIGSYS,  SIGTRAP, SIGXCPU, SIGUSR1, SIGUSR2};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool is_sanitized = true;
#else
constexpr bool is_sanitized = false;
#endif

/// What leaves the screen.
struct rescue_bytes {
    char bytes[256];
    std::size_t length;
    bool is_armed; // curses has the terminal
};
rescue_bytes rescue;

int add_byte(int byte)
{
    if (rescue.length < sizeof rescue.bytes)
        rescue.bytes[rescue.length++] = static_cast<char>(byte);
    return byte;
}

void add_sequence(terminal_text which)
{
    const char* sequence = terminal_sequence(which);
    if (sequence != nullptr)
        terminal_sequence_expand(sequence, add_byte);
}

void run_rescue()
{
    if (!rescue.is_armed)
        return;
    signal_silence(SIGTTOU);
    terminal_rescue_write();
    if (!terminal_is_lent())
        terminal_modes_give_back();
}

void on_crash(int signal_number)
{
    run_rescue();
    signal_take_default(signal_number);
}

void install_crash_handlers()
{
    if (is_sanitized)
        return; // the sanitizers have better handlers of their own
    struct sigaction action = {};
    action.sa_handler = on_crash;
    for (const int signal_number : crash_signals)
        sigaction(signal_number, &action, nullptr);
}

} // namespace

void terminal_rescue_arm()
{
    install_crash_handlers();
    rescue.is_armed = std::atexit(run_rescue) == 0;
}

void terminal_rescue_prepare()
{
    rescue.length = 0;
    for (const terminal_text which :
         {terminal_text::attributes_off, terminal_text::first_colours, terminal_text::keypad_off,
          terminal_text::meta_off, terminal_text::full_screen_off, terminal_text::cursor_on})
        add_sequence(which);
}

void terminal_rescue_disarm()
{
    rescue.is_armed = false;
}

void terminal_rescue_write()
{
    terminal_output_write(rescue.bytes, rescue.length);
}
