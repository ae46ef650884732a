// measured_program.hpp - a program in a terminal of its own, with its output timed.
//
// Owns the process, the terminal and a thread that empties it, so that a program never blocks
// because nobody reads. Does not interpret what the program writes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <thread>
#include <vector>

/// How long a program took to show its first screen.
struct first_screen {
    double ms = 0;         // from the call of exec to the last byte
    std::size_t bytes = 0; // written to the terminal by then
};

class measured_program
{
public:
    /// Starts a program on 24 lines of 80 columns. command: the path of the program and its
    /// arguments. home: HOME and working folder, for this program alone; it marks the processes
    /// that the program starts. A program that cannot be started ends with status 127.
    measured_program(std::vector<std::string> command, const std::string& home);
    /// Kills what still runs of the program.
    ~measured_program();
    measured_program(const measured_program&) = delete;
    measured_program& operator=(const measured_program&) = delete;

    /// Waits until the program has written `last_text` and then nothing more for a while. Must be
    /// called before anything is typed; none if the text does not come.
    std::optional<first_screen> wait_for_screen(std::string_view last_text);
    /// Types `keys`; false if the terminal does not take all of them.
    bool type(std::string_view keys);
    /// Types `keys` and waits until the program writes `text`. The time until then, in ms; none if
    /// it does not come.
    std::optional<double> time_answer(std::string_view keys, std::string_view text);
    /// Bytes that the program has written so far.
    std::size_t written();
    /// Waits until the program has written more than `before` bytes and then nothing more for a
    /// while. Returns the bytes written by then, or none if nothing comes.
    std::optional<std::size_t> wait_for_more(std::size_t before);
    /// Types `keys`; true if the program then ends with status 0 and its other processes end too.
    bool leave(std::string_view keys);
    /// The processes of the program that are running.
    std::vector<pid_t> processes() const;

private:
    void drain();
    bool others_end();
    void wait_for_quiet(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds quiet);

    std::string home_path;
    pid_t child = -1;
    int terminal_fd = -1;
    int stop_fd = -1;
    std::int64_t* exec_ns = nullptr; // shared with the child, which sets it just before exec
    std::mutex guard;
    std::condition_variable arrived;
    std::string output;            // all output
    std::int64_t last_read_ns = 0; // when its last byte came
    bool closed = false;
    std::thread drainer;
};
