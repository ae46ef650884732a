// modal_box.cpp - see modal_box.hpp.
#include "ui/modal_box.hpp"

#include "app/app_state.hpp"
#include "ui/glyphs.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

#include <algorithm>

namespace
{

void box_open(modal_box& box, const box_place& place)
{
    if (box.window != nullptr)
        delwin(box.window);
    box.window = popup_open(place.width, place.height, std::max(0, place.column),
                            std::max(0, place.row), true, colour::frame, true);
    // On a lost screen there is no box, and it is opened again on the next.
    box.made_for_lines = app_state.is_screen_lost ? 0 : LINES;
    box.made_for_columns = COLS;
    if (box.window != nullptr)
        keypad(box.window, TRUE);
}

} // namespace

void modal_box_fit(modal_box& box, const box_place& place)
{
    if (app_state.is_screen_lost || box.made_for_lines != LINES || box.made_for_columns != COLS)
        box_open(box, place);
    if (box.window == nullptr)
        return;
    glyphs_attribute(box.window, colour::frame, false);
    wborder(box.window, 0, 0, 0, 0, 0, 0, 0, 0);
    for (int row = 1; row < place.height - 1; ++row)
        line_blank(box.window, row, 1, place.width - 2);
}

void modal_box_write(const modal_box& box, int row, int column, colour pair, bool bold,
                     std::string_view text)
{
    if (box.window == nullptr)
        return;
    const int room = std::max(0, getmaxx(box.window) - 1 - column);
    glyphs_attribute(box.window, pair, bold);
    glyphs_write_at(box.window, row, column, text.substr(0, static_cast<std::size_t>(room)));
}

void modal_box_show(const modal_box& box)
{
    if (box.window == nullptr)
        return;
    touchwin(box.window);
    window_show(box.window);
}

void modal_box_erase(modal_box& box)
{
    window_erase(box.window);
    box = modal_box{};
}

void modal_box_close(modal_box& box)
{
    modal_box_erase(box);
    redraw_all();
}
