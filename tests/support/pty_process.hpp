// pty_process.hpp - a program running with a pseudo-terminal as its input and output.
//
// Owns the process group, the terminal's descriptor, and a thread that empties the terminal all
// the time, so that a program never stands still because a test looks elsewhere.
// Understands nothing of what the program writes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <termios.h>
#include <thread>
#include <vector>

/// What to start, and where.
struct program_start {
    std::vector<std::string> command{};     // the first is a path, or a name looked up in PATH
    std::vector<std::string> environment{}; // the whole of it, "NAME=value"
    std::string folder{};                   // working folder; empty: the test's own
    int rows = 24;
    int columns = 80;
};

class pty_process
{
public:
    /// Starts the program; standard error goes to a file of its own. A program that cannot be
    /// started ends with status 127 and says why there.
    explicit pty_process(const program_start& start);
    /// Kills what is left of the process group and reaps the program.
    ~pty_process();
    pty_process(const pty_process&) = delete;
    pty_process& operator=(const pty_process&) = delete;

    /// Types `bytes`. False if the terminal did not take them all.
    bool write(std::string_view bytes);
    /// What was written since the last call; waits up to `limit` for the first byte.
    std::string take_output(std::chrono::milliseconds limit);
    /// Writes `mark` to the terminal as a program would: what the program has written, or begun to
    /// write, comes out before it. False once the program's side is closed.
    bool write_after_program(std::string_view mark);
    /// Whether something was typed that the program has not read yet.
    bool has_unread_input() const;
    /// True once the program's side of the terminal is closed and all its output was taken.
    bool output_ended();
    /// Tells the kernel of a new size; it sends SIGWINCH to the foreground process group.
    void set_size(int rows, int columns);
    /// Takes the terminal away for good, as when a window is closed or a line is lost. Nothing can
    /// be typed or asked of the terminal afterwards.
    void hang_up();
    /// The wait status once the program has ended; reaps it.
    std::optional<int> wait_status();
    /// Sends a signal to the program alone; nothing once it was reaped.
    void send_signal(int number);
    /// The terminal's line settings as they are now.
    termios line_settings() const;
    /// The line settings that the program found.
    const termios& initial_line_settings() const
    {
        return found_settings;
    }
    /// All that the program wrote to its standard error so far.
    std::string error_text() const;
    pid_t id() const
    {
        return child;
    }

private:
    void drain();
    /// A descriptor of the terminal as the program has it, or -1. The caller closes it.
    int program_side_open() const;

    pid_t child = -1;
    int terminal_fd = -1;
    int error_fd = -1;
    int stop_fd = -1;
    termios found_settings{};
    std::optional<int> ended_with;
    std::mutex guard;
    std::condition_variable arrived;
    std::string pending;
    bool closed = false;
    std::thread drainer;
};
