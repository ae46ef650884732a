// headless_screen.hpp - curses without a terminal, for tests of code that reports and draws.
//
// Owns the screen, the panes and servers in app_state, and the file that stands in for the
// terminal. One at a time; before and after it, app_state is as at the program's start.
#pragma once

#include "app/app_state.hpp"
#include "base/owners.hpp"

#include <cstddef>
#include <ncurses.h>
#include <string>

class headless_screen
{
public:
    /// A screen of 24 lines and 80 columns with a status pane, a settings page and no servers. Ends
    /// the test program on failure.
    headless_screen();
    ~headless_screen();
    headless_screen(const headless_screen&) = delete;
    headless_screen& operator=(const headless_screen&) = delete;

    /// A row of a window without its frame and trailing blanks.
    std::string row_text(WINDOW* window, int row) const;
    /// The newest line of the status pane, or the one `back` lines before it.
    std::string status_text(int back = 0) const;
    /// The colour pair of a cell.
    int pair_at(WINDOW* window, int row, int column) const;
    bool is_bold_at(WINDOW* window, int row, int column) const;
    /// How often the terminal was told to beep.
    std::size_t bells() const;

private:
    unique_file input;
    unique_file output;
    SCREEN* terminal = nullptr;
};
