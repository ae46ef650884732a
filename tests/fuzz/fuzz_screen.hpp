// fuzz_screen.hpp - the client's whole screen for fuzzers: made once, emptied for every input, with
// keys as a terminal's bytes.
#pragma once

#include "fuzz/stand_ins.hpp"

#include <ncurses.h>
#include <string>
#include <string_view>

/// The time of one input on a screen of 24 lines and 80 columns, at first without servers and
/// settings. Pauses work, on a clock that nobody waits for (see stand_ins.hpp). The end releases
/// everything that the input has left.
class screen_visit
{
public:
    screen_visit();
    ~screen_visit();
    screen_visit(const screen_visit&) = delete;
    screen_visit& operator=(const screen_visit&) = delete;

private:
    world_visit world_around;
};

/// Types bytes on the terminal's keyboard.
void keys_type(std::string_view bytes);

/// Whether typed bytes are waiting to be read.
bool keys_wait();

/// For pauses in which the user does nothing: once all typed bytes are read, advances the clock so
/// that time-outs come soon.
void idle_pause();

/// Changes the terminal's size, as after SIGWINCH. lines, columns: at least 1.
void screen_resize(int lines, int columns);

/// Requires that no cell of the screen holds anything that could control a terminal.
void screen_check();

/// The text of a row of the screen: one byte per cell, "|" for the vertical line.
std::string screen_row(int row);
