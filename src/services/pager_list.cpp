// pager_list.cpp - see pager_list.hpp.
#include "services/pager_list.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "data/text.hpp"
#include "ui/glyphs.hpp"
#include "ui/keys.hpp"
#include "ui/layout.hpp"
#include "ui/modal_box.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace
{

constexpr long round_us = 25'000;
constexpr int list_width = 26;
constexpr int top_row = 4;
constexpr int lines_without_records = 4;
constexpr int heading_row = 1;
constexpr int first_record_row = 2;
constexpr int rows_around_records = 3; // frame and heading
constexpr int fields_of_a_record = 3;

/// What short values are padded to; longer ones push those after them to the right.
constexpr int field_widths[fields_of_a_record] = {8, 4, 6};

struct open_list {
    char** records; // as many as fitted on the terminal when the list came
    int count;
    modal_box box{};
};

/// A field's text: nothing for one that is missing or marked as empty. The last field of a record
/// that holds more than three ends where the next one begins.
std::string_view read_field(const char* field)
{
    if (field == nullptr || field[0] == '^')
        return {};
    const std::string_view value = field;
    return value.substr(0, value.find('\t'));
}

/// The column after the field.
int draw_field(WINDOW* window, int row, int column, std::string_view value, int width)
{
    // Kept on purpose: a value is shown whole up to the window's last column, even over the frame,
    // since the end of a registration or flight number tells it from others.
    // Test: pager_list.shows_records_of_every_form.
    const int end = glyphs_write_to_edge(window, row, column, value);
    const int padded_end = std::max(end, std::min(column + width, getmaxx(window)));
    line_blank(window, row, end, padded_end - end);
    return padded_end;
}

void draw_record(WINDOW* window, int row, const char* record)
{
    const heap_text copy{str_dup(record)};
    char* fields[fields_of_a_record] = {};
    if (!copy)
        return;
    str_split(copy.get(), fields, fields_of_a_record, "\t");
    glyphs_attribute(window, colour::text, false);
    int column = 1;
    for (int field = 0; field < fields_of_a_record; ++field) {
        if (field > 0 && column < getmaxx(window))
            mvwaddch(window, row, column++, ACS_VLINE);
        column = draw_field(window, row, column, read_field(fields[field]), field_widths[field]);
    }
}

void draw_list(open_list& list)
{
    const int height = list.count + rows_around_records;
    modal_box_fit(list.box, {list_width, height, layout_box_column(list_width), top_row});
    modal_box_write(list.box, height - 1, 2, colour::text, true, "[ Press ESC to close ]");
    modal_box_write(list.box, heading_row, 1, colour::label, true, "Registr. Airp Flightno");
    for (int index = 0; index < list.count && list.box.window; ++index)
        draw_record(list.box.window.get(), first_record_row + index, list.records[index]);
    modal_box_show(list.box);
}

/// False if it is not closed by then.
bool show_until_escape(open_list& list, std::time_t start)
{
    const modal_wait waiting;
    bool is_closed = false;
    while (!is_closed && !modal_time_is_over(start)) {
        draw_list(list);
        is_closed = key_read(app_state.server_pane) == key_escape;
        if (!is_closed)
            pause_for(round_us);
    }
    modal_box_close(list.box);
    return is_closed;
}

} // namespace

bool pager_list_show(const char* text)
{
    const std::time_t start = std::time(nullptr);
    const int max_records = std::max(1, LINES - lines_without_records);
    // Kept on purpose: if there are more records, the last one kept has the rest of the text in its
    // last field; users see by it that there is more.
    // Test: pager_list.shows_as_many_records_as_fit_on_the_terminal.
    const heap_text copy{str_dup(text)};
    const std::unique_ptr<char*, releaser<std::free>> records{
        static_cast<char**>(std::calloc(static_cast<std::size_t>(max_records), sizeof(char*)))};
    if (!copy || !records)
        return true;
    const int count = str_split(copy.get(), records.get(), max_records, "~");
    popup_close();
    redraw_all();
    open_list list{records.get(), std::min(count, max_records)};
    return show_until_escape(list, start);
}
