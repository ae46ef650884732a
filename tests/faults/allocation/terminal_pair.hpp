// terminal_pair.hpp - a pseudo-terminal of which one process holds both ends.
#pragma once

#include "base/owners.hpp"

#include <string>
#include <termios.h>

class terminal_pair
{
public:
    /// Opens it and makes the program's side this process's standard input and output.
    terminal_pair();

    /// Appends what was written to the terminal to `output`, without waiting.
    void drain(std::string& output) const;
    /// Appends everything that was written before this call.
    void drain_whole(std::string& output) const;
    /// The descriptor to poll for output.
    int screen_fd() const
    {
        return screen.get();
    }
    /// Resets it to 24 by 80 with these modes, and drops what was typed.
    void restore(const termios& modes) const;

    termios modes() const;

private:
    unique_fd screen;
};
