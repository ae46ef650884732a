// terminal_pair.hpp - a pseudo-terminal whose both ends one process holds.
#pragma once

#include "base/owners.hpp"

#include <string>
#include <termios.h>

class terminal_pair
{
public:
    /// Opens it and makes its program's side this process's standard input and output.
    terminal_pair();

    /// Takes what was written to the terminal and adds it to `output`, without waiting.
    void drain(std::string& output) const;
    /// Takes everything that was written before this call.
    void drain_whole(std::string& output) const;
    /// The descriptor to wait at for output.
    int screen_fd() const
    {
        return screen.get();
    }
    /// Makes it 24 by 80 again, with these modes, and forgets what was typed.
    void restore(const termios& modes) const;

    termios modes() const;

private:
    unique_fd screen;
};
