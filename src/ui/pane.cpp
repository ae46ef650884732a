// pane.cpp - see pane.hpp.
#include "ui/pane.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::size_t format_buffer_bytes = 4096;
constexpr std::size_t formatted_bytes = 4094; // the terminator included

constexpr int status_first_row = 1;
constexpr int status_last_moved_row = 3;

struct placement {
    colour pair;
    int column;
    int row;
    bool bold;
    bool scroll_first;
};

/// Directives that no caller means; they mark text that must not be formatted.
bool is_verbatim(const char* format)
{
    return std::strstr(format, "%*") != nullptr || std::strstr(format, "%]") != nullptr;
}

heap_text format_text(const char* format, va_list arguments)
{
    heap_text text{static_cast<char*>(std::calloc(format_buffer_bytes, 1))};
    if (!text)
        return text;
    if (is_verbatim(format))
        std::snprintf(text.get(), format_buffer_bytes, "%s", format);
    else
        std::vsnprintf(text.get(), formatted_bytes, format, arguments);
    return text;
}

void write_lines(WINDOW* window, const placement& place, std::string_view text)
{
    bool is_first = true;
    while (true) {
        const std::size_t end = text.find('\n');
        glyphs_write_at(window, place.row, place.column, text.substr(0, end));
        if (!is_first)
            wscrl(window, 1);
        is_first = false;
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

/// The status pane's right frame cell on its newest line is overwritten too: the gap belongs to the
/// look of this pane.
void pane_write(WINDOW* window, const placement& place, const char* text)
{
    if (place.scroll_first)
        wscrl(window, 1);
    if (window == app_state.status_pane)
        status_scroll(window, status_first_row, status_last_moved_row, COLS - 27);
    glyphs_attribute(window, place.pair, place.bold);
    write_lines(window, place, text);
    if (app_state.settings_shown == 0) {
        window_show(window);
        popup_raise();
    }
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
        pane_write(window, {pair, column, row, bold, scroll_first}, text.get());
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
    pane_write(app_state.status_pane, {pair, status_column, status_row, bold, false}, text.get());
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
