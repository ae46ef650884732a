// pty_process.hpp - a program with a pseudo-terminal as its input and output.
//
// Owns the process group, the terminal's descriptor, and a thread that empties the terminal all
// the time, so that a program never blocks because a test is busy elsewhere. A test may hold the
// thread back, as a terminal that reads nothing.
// Does not interpret what the program writes.
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
    std::vector<std::string> command{};     // the first is a path, or a name to find in PATH
    std::vector<std::string> environment{}; // all of it, as "NAME=value"
    std::string folder{};                   // working folder; empty: the test's own
    int rows = 24;
    int columns = 80;
};

class pty_process
{
public:
    /// Starts the program; standard error goes to a file of its own. A program that cannot be
    /// started ends with status 127 and says why in that file.
    explicit pty_process(const program_start& start);
    /// Kills what is left of the process group and reaps the program.
    ~pty_process();
    pty_process(const pty_process&) = delete;
    pty_process& operator=(const pty_process&) = delete;

    /// Types `bytes`. False if the terminal did not take all of them.
    bool write(std::string_view bytes);
    /// The output since the last call; waits up to `limit` for the first byte.
    std::string take_output(std::chrono::milliseconds limit);
    /// Writes `mark` to the terminal as a program would: it comes out after everything that the
    /// program has written or begun to write. False once the program's side is closed.
    bool write_after_program(std::string_view mark);
    /// Whether the program in front has output that it could not write yet, or is writing it.
    bool is_behind() const;
    /// Whether typed bytes are waiting for the program to read them.
    bool has_unread_input() const;
    /// Leaves the terminal unread from now on, or reads it again.
    void hold_output(bool held);
    /// Reads up to `count` bytes from a terminal that is held.
    void read_held(std::size_t count);
    /// Whether the terminal takes another byte from the program.
    bool has_room_for_output() const;
    /// True once the program's side of the terminal is closed and all its output has been taken.
    bool output_ended();
    /// Tells the kernel the new size; the kernel sends SIGWINCH to the foreground process group.
    void set_size(int rows, int columns);
    /// Takes the terminal away for good, as when a window is closed or a connection is lost. The
    /// terminal cannot be used after that.
    void hang_up();
    /// The wait status once the program has ended; reaps it.
    std::optional<int> wait_status();
    /// Sends a signal to the program alone; does nothing once it has been reaped.
    void send_signal(int number);
    /// The terminal's line settings as they are now.
    termios line_settings() const;
    /// The line settings that the program found.
    const termios& initial_line_settings() const
    {
        return found_settings;
    }
    /// What the program has written to its standard error so far.
    std::string error_text() const;
    pid_t id() const
    {
        return child;
    }

private:
    void drain();
    /// Reads what is there. False once the other side is closed everywhere.
    bool read_output(std::size_t limit);
    /// A descriptor of the program's side of the terminal, or -1. The caller closes it.
    int program_side_open() const;

    pid_t child = -1;
    int terminal_fd = -1;
    int error_fd = -1;
    int wake_fd = -1; // wakes the thread after a change of the two below
    bool is_held = false;
    bool is_stopping = false;
    termios found_settings{};
    std::optional<int> ended_with;
    std::mutex guard;
    std::condition_variable arrived;
    std::string pending;
    bool closed = false;
    std::thread drainer;
};
