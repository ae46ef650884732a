// service_menu.cpp - see service_menu.hpp.
#include "services/service_menu.hpp"

#include "app/app_state.hpp"
#include "base/pause.hpp"
#include "ui/keys.hpp"
#include "ui/layout.hpp"
#include "ui/modal_box.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

#include <ctime>

namespace
{

constexpr long round_us = 15'000;
constexpr int placed_width = 40; // a menu begins where one of this width would
constexpr int key_column = 2;
constexpr int label_column = 4;
constexpr int hint_column = 5;

struct open_menu {
    std::span<const menu_entry> table;
    int width;
    int height;
    const char* hint;
    modal_box box{};
};

void draw_menu(open_menu& menu)
{
    modal_box_fit(menu.box,
                  {menu.width, menu.height, layout_box_column(placed_width), layout_box_row()});
    int row = 1;
    for (const menu_entry& entry : menu.table) {
        modal_box_write(menu.box, row, key_column, colour::menu_key, true, {&entry.key, 1});
        modal_box_write(menu.box, row, label_column, colour::frame, true, entry.label);
        ++row;
    }
    modal_box_write(menu.box, menu.height - 1, hint_column, colour::text, true, menu.hint);
    modal_box_show(menu.box);
}

} // namespace

char service_menu(std::span<const menu_entry> table, int width, int height, const char* hint)
{
    popup_close();
    redraw_all();
    open_menu menu{table, width, height, hint};
    const modal_wait waiting;
    std::time_t start = std::time(nullptr);
    while (!modal_time_is_over(start)) {
        draw_menu(menu);
        const int key = key_read(app_state.server_pane);
        if (key == key_escape) {
            modal_box_close(menu.box);
            return '\0';
        }
        if (key >= '1' && key <= table.back().key) {
            modal_box_erase(menu.box);
            return static_cast<char>(key);
        }
        pause_for(round_us);
    }
    // Kept on purpose: unlike after Escape, what was under the menu is not repainted; users know
    // the hole that a forgotten menu leaves. Test:
    // service_menu.is_erased_after_ten_seconds_and_leaves_a_blank_area.
    modal_box_erase(menu.box);
    return '\0';
}
