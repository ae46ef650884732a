// modal_box.cpp - see modal_box.hpp.
#include "ui/modal_box.hpp"

#include "app/app_state.hpp"
#include "base/elapsed.hpp"
#include "ui/curses_screen.hpp"
#include "ui/glyphs.hpp"
#include "ui/redraw.hpp"

#include <algorithm>

namespace
{

void open_box(modal_box& box, const screen_area& area)
{
    app_state.modal_win = nullptr;
    box.window.reset();
    box.window.reset(popup_open(area.width, area.height, std::max(0, area.column),
                                std::max(0, area.row), true, colour::frame, true));
    // On a lost screen there is no box. It is opened on the next one.
    box.made_on_screen = may_draw() ? app_state.screen_number : 0;
    if (box.window)
        keypad(box.window.get(), TRUE);
}

} // namespace

bool modal_time_is_over(std::time_t& start)
{
    return elapsed_since(start, std::time(nullptr)) > modal_timeout_s;
}

modal_wait::modal_wait()
{
    ++app_state.open_boxes;
}

modal_wait::~modal_wait()
{
    --app_state.open_boxes;
}

bool modal_box_is_open()
{
    return app_state.open_boxes > 0;
}

void modal_box_fit(modal_box& box, const screen_area& area)
{
    // Sizes would not tell a screen from the one before the last, on which the window was cut down.
    if (!may_draw() || box.made_on_screen != app_state.screen_number)
        open_box(box, area);
    if (!box.window)
        return;
    glyphs_attribute(box.window.get(), colour::frame, false);
    wborder(box.window.get(), 0, 0, 0, 0, 0, 0, 0, 0);
    interior_blank(box.window.get(), area.width, area.height);
}

void modal_box_write(const modal_box& box, int row, int column, colour pair, bool bold,
                     std::string_view text)
{
    glyphs_attribute(box.window.get(), pair, bold);
    glyphs_write_to_frame(box.window.get(), row, column, text);
}

void modal_box_show(const modal_box& box)
{
    app_state.modal_win = box.window.get();
    window_raise(box.window.get());
}

void modal_box_erase(modal_box& box)
{
    app_state.modal_win = nullptr;
    window_erase(box.window.release());
    box = modal_box{};
}

void modal_box_close(modal_box& box)
{
    modal_box_erase(box);
    redraw_all();
}
