// server_info.cpp - see server_info.hpp.
#include "services/server_info.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "net/capability_table.hpp"
#include "ui/glyphs.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

namespace
{

// The window on the screen.
constexpr int window_height = 11;
constexpr int window_column = 6;
constexpr int columns_around_window = 12;
constexpr int rows_above_middle = 4;

// The rows in the window.
constexpr int name_row = 1;
constexpr int location_row = 2;
constexpr int connection_row = 3;
constexpr int flags_row = 4;
constexpr int info_row = 5;
constexpr int last_info_row = 8;
constexpr int keys_row = 9;
constexpr int hint_row = 10;

constexpr int columns_right_of_hint = 34; // from its first cell to the screen's edge
constexpr int columns_beside_info = 20;

/// Writes texts one after the other on a row of the window, up to its last column.
struct row_writer {
    WINDOW* window;
    int row;
    int column = 1;

    void write(colour pair, bool bold, std::string_view text)
    {
        glyphs_attribute(window, pair, bold);
        column = glyphs_write_to_edge(window, row, column, text);
    }
    void label(std::string_view text)
    {
        write(colour::label, true, text);
    }
    void value(std::string_view text)
    {
        write(colour::text, false, text);
    }
    void key(std::string_view text)
    {
        write(colour::secondary, true, text);
    }
};

const char* default_to_unknown(const char* text)
{
    return text != nullptr ? text : "unknown";
}

void draw_flags(WINDOW* window, const server_entry& server)
{
    row_writer flags{window, flags_row};
    flags.label("ServerFlags: ");
    for (const capability& offer : capability_table) {
        if (server.*offer.flag != 0)
            flags.value(offer.word);
    }
}

void draw_keys(WINDOW* window, const server_entry& server)
{
    row_writer keys{window, keys_row};
    keys.label("Special Keys: ");
    keys.key("| ");
    for (int place = 1; place <= std::ssize(capability_table); ++place) {
        for (const capability& offer : capability_table) {
            if (offer.key.place == place && server.*offer.flag != 0)
                keys.key(offer.key.label);
        }
    }
}

void draw_identity(WINDOW* window, const server_entry& server)
{
    char port[16];
    std::snprintf(port, sizeof port, "%d", server_port(server));
    row_writer name{window, name_row};
    name.label("ServerName: ");
    name.value(server_display_name(server));
    name.label(" Port: ");
    name.value(port);
    name.label(" Version: ");
    name.value(default_to_unknown(server.server_version));
    row_writer location{window, location_row};
    location.label("Location: ");
    location.value(default_to_unknown(server.Location));
    row_writer connection{window, connection_row};
    connection.label("Connected: ");
    connection.value(server.socket_fd != 0 ? "YES" : "NO");
    connection.label(" Unique ServerID: ");
    connection.value(default_to_unknown(server.server_uuid));
}

/// Where a text that is too long for a line breaks, and where the next line begins.
struct line_break {
    std::size_t end;
    std::size_t next;
};

/// Finds the last blank within reach, which is dropped. Without one the text breaks at the width.
line_break find_break(std::string_view rest, std::size_t width)
{
    const std::size_t blank = rest.rfind(' ', width);
    return blank == std::string_view::npos ? line_break{width, width}
                                           : line_break{blank, blank + 1};
}

void draw_info(WINDOW* window, const server_entry& server)
{
    row_writer line{window, info_row};
    line.label("Info: ");
    // Kept on purpose: unsigned, so that nothing counts as too long on a terminal narrower than the
    // margins. Test: server_info.wraps_nothing_on_terminals_narrower_than_its_margins.
    const auto width = static_cast<unsigned>(COLS - columns_beside_info);
    int next_row = info_row;
    std::string_view rest = default_to_unknown(server.Info);
    while (rest.size() > width && line.row <= last_info_row) {
        const line_break cut = find_break(rest, width);
        line.value(rest.substr(0, cut.end));
        rest.remove_prefix(cut.next);
        // Kept on purpose: the row is used before it is advanced, so the second line begins on the
        // first one's row, over the label; users know the window like that.
        // Test: server_info_window.one_letter_more_wraps_and_overwrites_the_label.
        line = {window, next_row++};
    }
    if (line.row <= last_info_row)
        line.value(rest);
}

} // namespace

void server_info_toggle()
{
    if (app_state.popup_win != nullptr)
        return popup_close();
    const server_entry* server = selected_server();
    if (server == nullptr)
        return;
    WINDOW* window = popup_open(COLS - columns_around_window, window_height, window_column,
                                LINES / 2 - rows_above_middle, true, colour::frame, true);
    app_state.popup_win = window;
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::frame, true);
    glyphs_write_at(window, hint_row, COLS - columns_right_of_hint, "[ Close Window ^I ]");
    draw_flags(window, *server);
    draw_keys(window, *server);
    draw_identity(window, *server);
    draw_info(window, *server);
    window_show(window);
}
