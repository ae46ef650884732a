// null_screen.hpp - the client's whole screen on a terminal that discards everything.
//
// Owns the terminal, app_state's windows and servers, and a temporary home folder that is also the
// working folder. One at a time. Curses works as on a real terminal, up to the last write.
#pragma once

#include "base/owners.hpp"
#include "support/temp_home.hpp"

class null_screen
{
public:
    /// 24 lines of 80 columns of a usual terminal type, drawn as after the program's start. Ends
    /// the program on failure. keys: name of the file that keys are read from.
    explicit null_screen(const char* keys = "/dev/null");
    ~null_screen();
    null_screen(const null_screen&) = delete;
    null_screen& operator=(const null_screen&) = delete;

    const temp_home& home() const
    {
        return folder;
    }

private:
    temp_home folder;
    unique_file input;
    unique_file output;
};

/// Forgets all servers and folders, as before a configuration is loaded.
void configuration_forget();
