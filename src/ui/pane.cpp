// pane.cpp - see pane.hpp.
#include "ui/pane.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/layout.hpp"
#include "ui/window.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::size_t format_buffer_size = 4096;
// Kept on purpose: a formatted text ends two bytes earlier than the buffer has space for.
// Test: pane_printing.cuts_a_formatted_text_at_4093_characters.
constexpr std::size_t formatted_size = 4094; // the terminator included

struct placement {
    colour pair;
    int column;
    int row;
    bool bold;
    bool scroll_first;
};

/// Directives that no caller means. They mark text that must not be formatted.
bool is_verbatim(const char* format)
{
    return std::strstr(format, "%*") != nullptr || std::strstr(format, "%]") != nullptr;
}

heap_text format_text(const char* format, va_list arguments)
{
    heap_text text{static_cast<char*>(std::calloc(format_buffer_size, 1))};
    if (!text)
        return text;
    // Kept on purpose: such a format is shown as it stands, and its arguments are not used.
    // Test: pane_printing.cuts_a_verbatim_format_at_4095_characters.
    if (is_verbatim(format))
        std::snprintf(text.get(), format_buffer_size, "%s", format);
    else
        std::vsnprintf(text.get(), formatted_size, format, arguments);
    return text;
}

void write_lines(WINDOW* window, const placement& place, std::string_view text)
{
    bool is_first = true;
    while (true) {
        const std::size_t end = text.find('\n');
        // Kept on purpose: a text wider than the pane goes on over the frame, in the row below.
        // Test: status_pane.a_wider_text_overwrites_the_frame_and_wraps_into_the_row_below.
        glyphs_write_at(window, place.row, place.column, text.substr(0, end));
        // Kept on purpose: nothing scrolls after the first line, so the second one replaces it.
        // Test: pane_printing.writes_the_second_of_two_lines_over_the_first_and_scrolls_once.
        if (!is_first)
            wscrl(window, 1);
        is_first = false;
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

void scroll_status_pane()
{
    // Kept on purpose: the blanks run up to the right frame and over it, which leaves a gap in the
    // frame on the newest line.
    // Test: status_pane.every_notice_opens_the_frame_on_the_newest_row_only.
    status_scroll(app_state.status_pane, status_first_row, status_row - 1,
                  layout_status_frame_column());
}

void write_to_pane(WINDOW* window, const placement& place, const char* text)
{
    if (place.scroll_first)
        wscrl(window, 1);
    if (window == app_state.status_pane)
        scroll_status_pane();
    glyphs_attribute(window, place.pair, place.bold);
    write_lines(window, place, text);
    if (app_state.settings_shown == 0)
        window_show(window);
    glyphs_attribute(window, place.pair, false);
}

} // namespace

void pane_printf(WINDOW* window, colour pair, int column, int row, bool bold, bool scroll_first,
                 const char* format, ...)
{
    if (format == nullptr || window == nullptr)
        return;
    va_list arguments;
    va_start(arguments, format);
    const heap_text text = format_text(format, arguments);
    va_end(arguments);
    if (text)
        write_to_pane(window, {pair, column, row, bold, scroll_first}, text.get());
}

void status_report(colour pair, const char* format, ...)
{
    if (app_state.status_pane == nullptr)
        return;
    va_list arguments;
    va_start(arguments, format);
    const heap_text text = format_text(format, arguments);
    va_end(arguments);
    if (!text)
        return;
    // A report is one line: lines of a server's text would scroll the pane with its frame.
    for (char* feed = text.get(); (feed = std::strchr(feed, '\n')) != nullptr;)
        *feed = ' ';
    const bool bold = pair >= colour::error && pair <= colour::success;
    write_to_pane(app_state.status_pane, {pair, status_column, status_row, bold, false},
                  text.get());
}

void status_scroll(WINDOW* window, int first, int last, int width)
{
    for (int row = first; row <= last; ++row) {
        for (int column = 1; column < width; ++column) {
            cchar_t cell;
            if (mvwin_wch(window, row + 1, column, &cell) != ERR)
                mvwadd_wch(window, row, column, &cell);
        }
    }
    line_blank(window, last + 1, 1, width);
    if (app_state.settings_shown == 0)
        window_show(window);
}

void page_titles_print(WINDOW* window, const char* title, const char* hint)
{
    pane_printf(window, colour::frame, page_margin, 0, true, false, "%s", title);
    pane_printf(window, colour::text, layout_hint_column(hint), LINES - 1, true, false, "%s", hint);
}
