// server_pane.cpp - see server_pane.hpp.
#include "ui/server_pane.hpp"

#include "app/app_state.hpp"
#include "ui/glyphs.hpp"
#include "ui/layout.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

// Kept on purpose: the bar is as wide as the longest name with its dots, not as the name under it.
// Test: server_pane.names_are_bold_white_and_the_first_is_under_the_bar.
constexpr int bar_cells = 24;
// Kept on purpose: a name of 22 to 24 letters is cut, though the bar would have cells for it.
// Test: server_pane.names_are_shown_whole_up_to_21_letters_and_cut_beyond.
constexpr std::size_t max_name_cells = 21;
constexpr std::string_view cut_name_end = "...";
constexpr std::size_t shown_name_size = bar_cells + 1; // the terminator included
constexpr std::string_view heading = "  \xBB available Servers \xAB  ";

std::int32_t count_servers()
{
    return app_state.servers != nullptr ? app_state.servers->count : 0;
}

/// The highest row that a marker can be written to: one below the last server's.
std::int32_t find_last_marker_row()
{
    return count_servers() + list_first_row;
}

/// The window's row of a list row, or -1 when that is not visible.
int find_window_row(std::int32_t row)
{
    const std::int32_t scrolled = row - app_state.list_scroll;
    // Kept on purpose: while the list is not scrolled, the row of the heading counts too. Closing
    // the first server's connection writes its blank there.
    // Test:
    // disconnect.disconnecting_the_first_server_blanks_a_cell_of_the_heading_and_keeps_the_marker.
    const std::int32_t top = app_state.list_scroll > 0 ? list_first_row : list_heading_row;
    return scrolled >= top && scrolled <= layout_list_last_row() ? scrolled : -1;
}

bool reserve_markers(std::int32_t rows)
{
    if (rows <= app_state.list_markers_count)
        return true;
    void* grown = std::realloc(app_state.list_markers, static_cast<size_t>(rows));
    if (grown == nullptr)
        return false;
    app_state.list_markers = static_cast<char*>(grown);
    std::memset(app_state.list_markers + app_state.list_markers_count, marker_none,
                static_cast<size_t>(rows - app_state.list_markers_count));
    app_state.list_markers_count = rows;
    return true;
}

void clear_markers()
{
    // Kept on purpose: connected servers lose their markers too, until they are marked again.
    // Test: server_pane.a_list_drawn_anew_forgets_the_marks_and_puts_later_ones_a_row_lower.
    if (reserve_markers(find_last_marker_row() + 1))
        std::memset(app_state.list_markers, marker_none,
                    static_cast<size_t>(app_state.list_markers_count));
}

/// Pads a name with blanks, or cuts it and ends it with dots. The blanks also cover the dots of a
/// name that stood on the same row before.
void format_name(const char* name, char (&shown)[shown_name_size])
{
    const std::size_t length = std::strlen(name);
    std::memset(shown, ' ', bar_cells);
    shown[bar_cells] = '\0';
    std::memcpy(shown, name, std::min(length, max_name_cells));
    if (length > max_name_cells)
        cut_name_end.copy(shown + max_name_cells, cut_name_end.size());
}

void draw_row(std::int32_t index)
{
    const std::int32_t row = index + list_first_row;
    char name[shown_name_size];
    format_name(server_display_name(*server_at(app_state.servers, index)), name);
    const char marker[] = {server_marker_read(row), '\0'};
    glyphs_attribute(app_state.server_pane, colour::label, true);
    glyphs_write_at(app_state.server_pane, find_window_row(row), list_marker_column, marker);
    glyphs_attribute(app_state.server_pane, colour::text, true);
    glyphs_write(app_state.server_pane, name);
}

void draw_rows()
{
    const std::int32_t first = app_state.list_scroll;
    const std::int32_t end = std::min(count_servers(), first + layout_list_rows());
    for (std::int32_t index = first; index < end; ++index)
        draw_row(index);
}

/// Scrolls so that the selected server is visible. True when that moved the list.
bool scroll_to_selected()
{
    const std::int32_t rows = layout_list_rows();
    const std::int32_t index = std::max(0, app_state.selected - 1);
    std::int32_t scroll = app_state.list_scroll;
    if (index >= scroll + rows)
        scroll = index - rows + 1;
    scroll = std::min({scroll, index, std::max(0, count_servers() - rows)});
    const bool has_moved = scroll != app_state.list_scroll;
    app_state.list_scroll = scroll;
    return has_moved;
}

void paint_bar_cells(std::int32_t selected, attr_t attributes, colour pair)
{
    const int row = find_window_row(selected - 1 + list_first_row);
    if (app_state.server_pane != nullptr && row >= list_first_row)
        mvwchgat(app_state.server_pane, row, list_name_column, bar_cells,
                 attributes | colour_substitute(pair), colour_number(pair), nullptr);
}

void draw_bar()
{
    // Kept on purpose: the bar is drawn even where no server stands, as in an empty list after a
    // resize. Test: screen.a_resize_of_an_empty_list_draws_the_bar_but_selects_nothing.
    paint_bar_cells(app_state.selected, A_NORMAL, colour::bar);
}

/// Sets every server's list_row to its row.
void number_rows()
{
    // Kept on purpose: list_row means two things, the server's own row after a drawing and the row
    // above after a connect. Markers are placed as for the second.
    // Test: server_pane.a_list_drawn_anew_forgets_the_marks_and_puts_later_ones_a_row_lower.
    const std::int32_t count = count_servers();
    for (std::int32_t index = 0; index < count; ++index)
        server_at(app_state.servers, index)->list_row = index + list_first_row;
}

} // namespace

void server_list_draw()
{
    clear_markers();
    number_rows();
    if (app_state.selected == -1 && count_servers() > 0)
        app_state.selected = 1;
    scroll_to_selected();
    glyphs_attribute(app_state.server_pane, colour::bar, false);
    glyphs_write_at(app_state.server_pane, list_heading_row, list_marker_column, heading);
    draw_rows();
    draw_bar();
    window_show(app_state.server_pane);
}

void server_list_select(std::int32_t selected)
{
    paint_bar_cells(app_state.selected, A_BOLD, colour::text);
    app_state.selected = selected;
    if (scroll_to_selected())
        draw_rows();
    draw_bar();
    // Shown now: reading the next key would show it too, but only a round later.
    window_raise(app_state.server_pane);
}

void server_marker_write(std::int32_t row, char marker)
{
    if (row < list_heading_row || !reserve_markers(std::max(row, find_last_marker_row()) + 1))
        return;
    app_state.list_markers[row] = marker;
    const char text[] = {marker, '\0'};
    glyphs_attribute(app_state.server_pane, colour::label, true);
    const int window_row = find_window_row(row);
    if (window_row >= 0)
        glyphs_write_at(app_state.server_pane, window_row, list_marker_column, text);
    window_show(app_state.server_pane);
}

int server_row_on_screen(std::int32_t row)
{
    const bool are_all_visible = count_servers() <= layout_list_rows();
    return are_all_visible || find_window_row(row) >= 0 ? row - app_state.list_scroll : -1;
}

char server_marker_read(std::int32_t row)
{
    return row >= 0 && row < app_state.list_markers_count ? app_state.list_markers[row]
                                                          : marker_none;
}
