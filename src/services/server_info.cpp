// server_info.cpp - see server_info.hpp.
#include "services/server_info.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "ui/glyphs.hpp"
#include "ui/layout.hpp"
#include "ui/popup.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace
{

constexpr int window_height = 11;
constexpr int left_column = 6;
constexpr int info_row = 5;
constexpr int last_info_row = 8; // the keys stand on the next

struct service_word {
    std::uint8_t server_entry::*flag;
    const char* text;
};

constexpr service_word flag_words[] = {
    {&server_entry::crc_check, "CRC "},      {&server_entry::can_mail, "MAILING "},
    {&server_entry::can_modify, "MODIFY "},  {&server_entry::can_page, "PAGER "},
    {&server_entry::can_report, "REPORTS "},
};
constexpr service_word key_words[] = {
    {&server_entry::can_modify, "^A Add entries | "},
    {&server_entry::can_mail, "^M Mailing | "},
    {&server_entry::can_report, "^O Reports | "},
    {&server_entry::can_page, "^P Pager | "},
};

/// Writes texts one behind the other on a row of the window, up to its last column.
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
};

const char* or_unknown(const char* text)
{
    return text != nullptr ? text : "unknown";
}

void services_draw(WINDOW* window, const server_entry& server)
{
    row_writer flags{window, 4};
    flags.label("ServerFlags: ");
    for (const service_word& word : flag_words) {
        if (server.*word.flag != 0)
            flags.value(word.text);
    }
    row_writer keys{window, 9};
    keys.label("Special Keys: ");
    keys.write(colour::secondary, true, "| ");
    for (const service_word& word : key_words) {
        if (server.*word.flag != 0)
            keys.write(colour::secondary, true, word.text);
    }
}

void identity_draw(WINDOW* window, const server_entry& server)
{
    char port[16];
    std::snprintf(port, sizeof port, "%d", server_port(server));
    row_writer name{window, 1};
    name.label("ServerName: ");
    name.value(server_display_name(server));
    name.label(" Port: ");
    name.value(port);
    name.label(" Version: ");
    name.value(or_unknown(server.server_version));
    row_writer location{window, 2};
    location.label("Location: ");
    location.value(or_unknown(server.Location));
    row_writer connection{window, 3};
    connection.label("Connected: ");
    connection.value(server.socket_fd != 0 ? "YES" : "NO");
    connection.label(" Unique ServerID: ");
    connection.value(or_unknown(server.server_uuid));
}

/// Where a text that is too long for a line breaks: at the last blank within reach, which is
/// dropped, or hard where there is none.
struct line_break {
    std::size_t end;
    std::size_t next;
};
line_break line_break_of(std::string_view rest, std::size_t width)
{
    const std::size_t blank = rest.rfind(' ', width);
    return blank == std::string_view::npos ? line_break{width, width}
                                           : line_break{blank, blank + 1};
}

/// The second line begins on the first one's row, over the label: the row is advanced only after it
/// was used.
void info_draw(WINDOW* window, const server_entry& server)
{
    row_writer line{window, info_row};
    line.label("Info: ");
    // On a terminal narrower than the margins nothing counts as too long.
    const auto width = static_cast<unsigned>(COLS - 20);
    int next_row = info_row;
    std::string_view rest = or_unknown(server.Info);
    while (rest.size() > width && line.row <= last_info_row) {
        const line_break cut = line_break_of(rest, width);
        line.value(rest.substr(0, cut.end));
        rest.remove_prefix(cut.next);
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
    WINDOW* window = popup_open(COLS - 12, window_height, left_column, layout_box_row(), true,
                                colour::frame, true);
    app_state.popup_win = window;
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::frame, true);
    glyphs_write_at(window, 10, COLS - 34, "[ Close Window ^I ]");
    services_draw(window, *server);
    identity_draw(window, *server);
    info_draw(window, *server);
    window_show(window);
}
