// layout.hpp - where everything stands on a terminal of LINES rows and COLS columns.
//
//     +- servers -+   messages
//     |           |
//     |           +- status ----------+
//     +-----------+-------------------+
//     ^D Disconnect, ...       key line
#pragma once

#include <algorithm>
#include <ncurses.h>
#include <string_view>

/// A rectangle of the screen, in cells. A frame is part of it.
struct screen_area {
    int width;
    int height;
    int column; // of the top left corner
    int row;
};

constexpr int server_pane_width = 27;
constexpr int status_pane_height = 6;
constexpr int key_line_height = 1;

// Rows and columns within the server list.
constexpr int list_heading_row = 1;
constexpr int list_first_row = 2;
constexpr int list_marker_column = 1;
constexpr int list_name_column = 2;

// Rows and columns within the message pane.
constexpr int message_first_row = 1;
constexpr int message_column = 1;

// Rows and columns within the status pane.
constexpr int status_first_row = 1;
constexpr int status_row = status_pane_height - 2; // of the newest line
constexpr int status_column = 1;

/// Columns to the left of a page's title and to the right of its hint.
constexpr int page_margin = 2;

/// A page in front: the settings or the help.
inline screen_area layout_page()
{
    return {COLS, LINES, 0, 0};
}

inline screen_area layout_server_pane()
{
    return {std::min(server_pane_width, COLS), LINES - key_line_height, 0, 0};
}

/// Shares a column with the server list's right frame.
inline screen_area layout_status_pane()
{
    constexpr int column = server_pane_width - 1;
    return {COLS - column, status_pane_height, column,
            LINES - key_line_height - status_pane_height};
}

/// Ends one column before the screen does. Its last row lies under the status pane's upper frame.
inline screen_area layout_message_pane()
{
    return {COLS - server_pane_width - 1, LINES - status_pane_height, server_pane_width, 0};
}

inline screen_area layout_key_line()
{
    return {COLS, key_line_height, 0, LINES - key_line_height};
}

/// The last row of the server list's pane that a server can stand on.
inline int layout_list_last_row()
{
    return layout_server_pane().height - 2;
}

/// How many servers the pane has room for.
inline int layout_list_rows()
{
    return std::max(0, layout_list_last_row() - list_first_row + 1);
}

/// The row of the message pane that messages are printed on: the last one that scrolls.
inline int layout_message_row()
{
    // Kept on purpose: the row between the messages and the status pane stays empty.
    // Test: screen_building.scrolls_messages_above_the_status_pane_only.
    return layout_status_pane().row - 2;
}

/// The column of the right frame within the status pane.
inline int layout_status_frame_column()
{
    return layout_status_pane().width - 1;
}

/// The column where a page's hint begins on the last row.
inline int layout_hint_column(std::string_view hint)
{
    return COLS - page_margin - static_cast<int>(hint.size());
}

/// The column where a centred box begins. width: of the box, in cells.
inline int layout_box_column(int width)
{
    return COLS / 2 - width / 2;
}

/// The row where a centred box begins.
inline int layout_box_row()
{
    return LINES / 2 - 4;
}
