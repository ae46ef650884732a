// server_pane.hpp - the list of servers at the left: names, connection markers, highlight bar.
//
// A row is named as in a list that is not scrolled: the server at 0-based position p stands on row
// p + 2, below the frame and the heading. When there are more servers than rows, the list scrolls
// and everything is shown that many rows higher. Markers outside the visible list are remembered.
#pragma once

#include <cstdint>

/// The marker of a connected server.
constexpr char marker_connected = '*';
/// The marker of a server without a connection.
constexpr char marker_none = ' ';

/// Draws heading, names and bar, takes all markers away, and sets every server's list_row to its
/// row. Selects the first server if none was ever selected.
void server_list_draw();

/// Moves the highlight bar to a server. selected: 1-based, must name a server of the list.
void server_list_select(std::int32_t selected);

/// The row of the screen to show something on beside a row of the list; -1 while that row is
/// scrolled out of sight. If all servers fit, every row counts as visible. row: as named above.
int server_row_on_screen(std::int32_t row);

/// Writes a connection marker and shows it. row: as named above.
void server_marker_write(std::int32_t row, char marker);

/// The marker that stands on a row; marker_none for rows outside the list.
char server_marker_read(std::int32_t row);
