// server_pane.cpp - see server_pane.hpp.
#include "ui/server_pane.hpp"

#include "app/app_state.hpp"
#include "ui/glyphs.hpp"
#include "ui/redraw.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

constexpr int heading_row = 1;
constexpr int first_list_row = 2;
constexpr int marker_column = 1;
constexpr int name_column = 2;
constexpr int bar_cells = 24;
constexpr std::size_t name_cells = 21;
constexpr std::size_t name_room = 27; // the terminator included
constexpr std::string_view heading = "  \xBB available Servers \xAB  ";

/// Rows between the heading and the bottom frame.
std::int32_t visible_rows()
{
    return std::max(0, LINES - 4);
}

std::int32_t server_count()
{
    return app_state.servers != nullptr ? app_state.servers->count : 0;
}

/// The highest row number that a marker can be written to: one below the last server's.
std::int32_t last_marked_row()
{
    return server_count() + first_list_row;
}

bool is_page_in_front()
{
    return app_state.settings_shown != 0 || app_state.help_shown != 0;
}

/// Brings what was drawn to the screen; a page in front stays in front.
void list_show()
{
    if (app_state.server_pane != nullptr)
        window_show(app_state.server_pane);
    if (is_page_in_front())
        redraw_all();
}

/// The window's row of a list row, or -1 when that is not visible. While the list is not scrolled,
/// the heading's row counts: closing the first server's connection writes its blank there.
int window_row(std::int32_t row)
{
    const std::int32_t scrolled = row - app_state.list_scroll;
    const std::int32_t lowest = app_state.list_scroll > 0 ? first_list_row : heading_row;
    return scrolled >= lowest && scrolled <= LINES - 3 ? scrolled : -1;
}

bool marks_reserve(std::int32_t rows)
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

void marks_clear()
{
    if (marks_reserve(last_marked_row() + 1))
        std::memset(app_state.list_markers, marker_none,
                    static_cast<size_t>(app_state.list_markers_count));
}

/// A name of up to 21 characters padded with blanks, a longer one cut there and marked. The blanks
/// also cover the mark of a name that stood on the same row before.
void name_format(const char* name, char (&shown)[name_room])
{
    const std::size_t length = std::strlen(name);
    std::memset(shown, '\0', name_room);
    std::memset(shown, ' ', bar_cells);
    std::memcpy(shown, name, std::min(length, name_cells));
    if (length > name_cells)
        std::memcpy(shown + name_cells, "...", 3);
}

void row_draw(std::int32_t index)
{
    const std::int32_t row = index + first_list_row;
    char name[name_room];
    name_format(server_display_name(*server_at(app_state.servers, index)), name);
    const char marker[] = {server_marker_read(row), '\0'};
    glyphs_attribute(app_state.server_pane, colour::label, true);
    glyphs_write_at(app_state.server_pane, window_row(row), marker_column, marker);
    glyphs_attribute(app_state.server_pane, colour::text, true);
    glyphs_write(app_state.server_pane, name);
}

void rows_draw()
{
    const std::int32_t first = app_state.list_scroll;
    const std::int32_t end = std::min(server_count(), first + visible_rows());
    for (std::int32_t index = first; index < end; ++index)
        row_draw(index);
}

/// Scrolls so that the selected server is visible; true when that moved the list.
bool scroll_to_selected()
{
    const std::int32_t rows = visible_rows();
    const std::int32_t index = std::max(0, app_state.selected - 1);
    std::int32_t scroll = app_state.list_scroll;
    if (index >= scroll + rows)
        scroll = index - rows + 1;
    scroll = std::min({scroll, index, std::max(0, server_count() - rows)});
    const bool moved = scroll != app_state.list_scroll;
    app_state.list_scroll = scroll;
    return moved;
}

void bar_cells_set(std::int32_t selected, attr_t attributes, colour pair)
{
    const int row = window_row(selected + 1);
    if (app_state.server_pane != nullptr && row >= first_list_row)
        mvwchgat(app_state.server_pane, row, name_column, bar_cells, attributes,
                 colour_number(pair), nullptr);
}

/// Lays the highlight bar on the selected row, whether a server stands there or not.
void bar_draw()
{
    bar_cells_set(app_state.selected, A_NORMAL, colour::bar);
}

} // namespace

void server_list_draw()
{
    marks_clear();
    const std::int32_t count = server_count();
    for (std::int32_t index = 0; index < count; ++index)
        server_at(app_state.servers, index)->list_row = index + first_list_row;
    if (app_state.selected == -1 && count > 0)
        app_state.selected = 1;
    scroll_to_selected();
    glyphs_attribute(app_state.server_pane, colour::bar, false);
    glyphs_write_at(app_state.server_pane, heading_row, 1, heading);
    rows_draw();
    bar_draw();
    list_show();
}

void server_list_select(std::int32_t selected)
{
    bar_cells_set(app_state.selected, A_BOLD, colour::text);
    app_state.selected = selected;
    if (scroll_to_selected())
        rows_draw();
    bar_draw();
    if (!is_page_in_front() && app_state.server_pane != nullptr)
        touchwin(app_state.server_pane);
    // Shown now: reading the next key would show it too, but only a round later.
    list_show();
}

void server_marker_write(std::int32_t row, char marker)
{
    if (row < heading_row || !marks_reserve(std::max(row, last_marked_row()) + 1))
        return;
    app_state.list_markers[row] = marker;
    const char text[] = {marker, '\0'};
    glyphs_attribute(app_state.server_pane, colour::label, true);
    const int drawn_row = window_row(row);
    if (drawn_row >= 0)
        glyphs_write_at(app_state.server_pane, drawn_row, marker_column, text);
    list_show();
}

bool server_row_is_visible(std::int32_t row)
{
    return server_count() <= visible_rows() || window_row(row) >= 0;
}

char server_marker_read(std::int32_t row)
{
    return row >= 0 && row < app_state.list_markers_count ? app_state.list_markers[row]
                                                          : marker_none;
}
