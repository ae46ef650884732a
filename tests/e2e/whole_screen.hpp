// whole_screen.hpp - tells whether the client's panes are on the screen as they should be, whatever
// was on it before.
#pragma once

#include "support/terminal_session.hpp"

#include <string>
#include <vector>

/// The first thing wrong with the frames, the tees, the heading or the key line of a screen of at
/// least 10 rows and 80 columns; empty if nothing is.
std::string frame_fault(const terminal_screen& screen);

/// The same, and the title must be in the status pane, as long as other lines leave it there.
std::string screen_fault(const terminal_screen& screen);

/// Waits until nothing is wrong with them.
[[nodiscard]] testing::AssertionResult wait_for_whole_screen(terminal_session& terminal);

/// Every cell of the screen, row by row.
std::vector<screen_cell> all_cells(const terminal_screen& screen);
