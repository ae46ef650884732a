// settings_page.cpp - see settings_page.hpp.
#include "data/settings_page.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "ui/glyphs.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>

namespace
{

constexpr int first_row = 2;
constexpr int left_column = 2;
constexpr int mark_column = 3;
constexpr int folder_room = 60;
constexpr std::string_view empty_box = "[ ] ";
constexpr std::string_view no_box = "    ";

/// A label without its hot key marker; shown.get() is null when memory is short.
struct shown_label {
    heap_text text;
    int hot_index; // where the hot key's letter stands; -1: none
};

shown_label label_split(const char* label)
{
    const char* marker = std::strchr(label, '~');
    return {heap_text{str_replace(str_dup(label), "~", nullptr)},
            marker != nullptr ? static_cast<int>(marker - label) : -1};
}

/// Writes a label at a place and its hot key's letter in bold. The letter's column is compared with
/// the label's length, so a letter far to the right stays plain.
void label_draw(int row, int column, const shown_label& label)
{
    WINDOW* window = app_state.settings_win;
    if (!label.text)
        return;
    glyphs_write_at(window, row, column, label.text.get());
    const int hot_column = column + label.hot_index;
    const auto length = static_cast<int>(std::strlen(label.text.get()));
    if (label.hot_index < 0 || hot_column >= length)
        return;
    glyphs_attribute(window, colour::text, true);
    glyphs_write_at(window, row, hot_column, {label.text.get() + label.hot_index, 1});
    glyphs_attribute(window, colour::text, false);
}

int checkboxes_draw(int row)
{
    for (std::size_t index = 0; index < checkbox_setting_count; ++index, ++row) {
        const checkbox_setting& setting = checkbox_setting_table[index];
        const bool has_box = std::strcmp(setting.kind, "1") == 0;
        const shown_label label = label_split(setting.label);
        const std::string_view box = has_box ? empty_box : no_box;
        glyphs_write_at(app_state.settings_win, row, left_column, box);
        label_draw(row, left_column + static_cast<int>(box.size()), label);
        app_state.checkbox_rows[index] = label.hot_index >= 0 ? row : -1;
    }
    return row;
}

void separator_draw(int row)
{
    WINDOW* window = app_state.settings_win;
    glyphs_attribute(window, colour::frame, false);
    mvwhline(window, row, 1, ACS_HLINE, COLS - 2);
    mvwaddch(window, row, 0, ACS_LTEE);
    mvwaddch(window, row, COLS - 1, ACS_RTEE);
    glyphs_attribute(window, colour::text, false);
}

void folder_labels_draw(int row)
{
    for (std::size_t index = 0; index < setting_text_count; ++index, ++row) {
        const shown_label label = label_split(text_setting_table[index].label);
        label_draw(row, left_column, label);
        const int length = label.text ? static_cast<int>(std::strlen(label.text.get())) : 0;
        glyphs_write_at(app_state.settings_win, row, left_column + length, ": ");
        app_state.text_rows[index] = row;
        app_state.text_columns[index] = length + 4;
    }
}

/// Asks for a folder. Null unless the answer names one that is there; a link to one does not count.
heap_text folder_ask(const text_setting& setting)
{
    heap_text folder{prompt_input(folder_room, setting.label, hint_or_cancel,
                                  app_state.setting_texts[setting.index])};
    if (!folder)
        return nullptr;
    strip_trailing_slash(folder.get());
    struct stat status = {};
    if (lstat(folder.get(), &status) == 0 && S_ISDIR(status.st_mode))
        return folder;
    beep();
    return nullptr;
}

void folder_edit(std::size_t index)
{
    const text_setting& setting = text_setting_table[index];
    if (app_state.setting_texts == nullptr)
        return;
    heap_text folder = folder_ask(setting);
    if (!folder)
        return;
    const int column = app_state.text_columns[index];
    glyphs_attribute(app_state.settings_win, colour::text, true);
    line_blank(app_state.settings_win, app_state.text_rows[index], column, COLS - column - 1);
    std::free(app_state.setting_texts[setting.index]);
    app_state.setting_texts[setting.index] = folder.release();
    settings_folder_draw(index);
}

} // namespace

void settings_dialog()
{
    WINDOW* window = app_state.settings_win;
    pane_printf(window, colour::frame, 2, 0, true, false, "[ ncurses tovrik client - Settings ]");
    pane_printf(window, colour::text, COLS - 58, LINES - 1, true, false,
                "[ To switch use ALT+highlighted Key - To exit press ^E ]");
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::text, false);
    const int after_checkboxes = checkboxes_draw(first_row);
    separator_draw(after_checkboxes + 1);
    folder_labels_draw(after_checkboxes + 3);
}

void settings_mark_draw(std::size_t index)
{
    const int row = app_state.checkbox_rows[index];
    if (row <= 0)
        return;
    const bool is_on = (app_state.setting_flags & checkbox_setting_table[index].bit) != 0;
    glyphs_attribute(app_state.settings_win, colour::label, true);
    glyphs_write_at(app_state.settings_win, row, mark_column, is_on ? "X" : " ");
}

void settings_folder_draw(std::size_t index)
{
    const char* folder = app_state.setting_texts != nullptr
                             ? app_state.setting_texts[text_setting_table[index].index]
                             : nullptr;
    if (folder == nullptr || app_state.text_rows[index] < 0)
        return;
    const int column = app_state.text_columns[index];
    const int room = std::max(0, COLS - column - 1);
    glyphs_attribute(app_state.settings_win, colour::text, true);
    glyphs_write_at(app_state.settings_win, app_state.text_rows[index], column,
                    std::string_view{folder}.substr(0, static_cast<size_t>(room)));
}

void settings_values_draw()
{
    for (std::size_t index = 0; index < checkbox_setting_count; ++index)
        settings_mark_draw(index);
    for (std::size_t index = 0; index < setting_text_count; ++index)
        settings_folder_draw(index);
}

void settings_key(int key)
{
    for (std::size_t index = 0; checkbox_setting_table[index].bit != checkbox_table_end; ++index) {
        if (checkbox_setting_table[index].hot_key != key)
            continue;
        app_state.setting_flags ^= checkbox_setting_table[index].bit;
        settings_mark_draw(index);
    }
    for (std::size_t index = 0; text_setting_table[index].kind != nullptr; ++index) {
        if (text_setting_table[index].hot_key == key)
            folder_edit(index);
    }
    if (app_state.settings_shown != 0 && app_state.settings_win != nullptr)
        window_show(app_state.settings_win);
}
