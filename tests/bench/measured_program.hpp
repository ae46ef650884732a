// measured_program.hpp - a program running in a terminal of its own, with what it writes timed.
//
// Owns the process, the terminal and a thread that empties it, so that a program never stands
// still because nobody reads. Understands nothing of what the program writes.
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

/// How long a program took to show its first screen.
struct first_screen {
    double ms = 0;         // from the call of exec to the arrival of the last byte
    std::size_t bytes = 0; // written to the terminal until then
};

class measured_program
{
public:
    /// Starts the program `path` on 24 lines of 80 columns with `home` as HOME and as working
    /// folder. One that cannot be started ends with status 127.
    measured_program(const std::string& path, const std::string& home);
    /// Kills the program if it still runs.
    ~measured_program();
    measured_program(const measured_program&) = delete;
    measured_program& operator=(const measured_program&) = delete;

    /// Waits until the program has written `last_text` and then nothing more for a while. To be
    /// called before anything is typed; none if the text does not come.
    std::optional<first_screen> wait_for_screen(std::string_view last_text);
    /// Types `keys`; false if the terminal does not take them all.
    bool type(std::string_view keys);
    /// Types ^X; true if the program then ends with status 0.
    bool leave();
    pid_t id() const
    {
        return child;
    }

private:
    void drain();

    pid_t child = -1;
    int terminal_fd = -1;
    int stop_fd = -1;
    std::int64_t* exec_ns = nullptr; // shared with the child, which notes the time just before exec
    std::mutex guard;
    std::condition_variable arrived;
    std::string output;            // all of it
    std::int64_t last_read_ns = 0; // when its last byte came
    bool closed = false;
    std::thread drainer;
};
