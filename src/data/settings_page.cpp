// settings_page.cpp - see settings_page.hpp.
#include "data/settings_page.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "ui/glyphs.hpp"
#include "ui/hot_key_label.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"
#include "ui/window.hpp"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>

namespace
{

constexpr int first_row = 2;
constexpr int left_column = 2;
constexpr int check_column = 3;
constexpr int gap_rows = 1; // empty rows above and below the separator
constexpr int folder_size = 60;
constexpr std::string_view empty_box = "[ ] ";
constexpr std::string_view no_box = "    ";
constexpr std::string_view after_folder_label = ": ";

/// Draws the lines of the page's upper block. Returns the row after the last one.
int draw_checkboxes()
{
    int row = first_row;
    for (std::size_t index = 0; index < checkbox_setting_count; ++index, ++row) {
        const checkbox_setting& setting = checkbox_setting_table[index];
        const bool has_box = std::strcmp(setting.kind, "1") == 0;
        const std::string_view box = has_box ? empty_box : no_box;
        glyphs_write_at(app_state.settings_win, row, left_column, box);
        hot_key_label_draw(app_state.settings_win, row, left_column + static_cast<int>(box.size()),
                           setting.label);
        app_state.checkbox_rows[index] = setting.hot_key != 0 ? row : -1;
    }
    return row;
}

void draw_separator(int row)
{
    WINDOW* window = app_state.settings_win;
    const int last_column = getmaxx(window) - 1;
    glyphs_attribute(window, colour::frame, false);
    mvwhline(window, row, 1, ACS_HLINE, last_column - 1);
    mvwaddch(window, row, 0, ACS_LTEE);
    mvwaddch(window, row, last_column, ACS_RTEE);
    glyphs_attribute(window, colour::text, false);
}

void draw_folder_labels(int first_folder_row)
{
    int row = first_folder_row;
    for (std::size_t index = 0; index < setting_text_count; ++index, ++row) {
        const int end = left_column + hot_key_label_draw(app_state.settings_win, row, left_column,
                                                         text_setting_table[index].label);
        glyphs_write_at(app_state.settings_win, row, end, after_folder_label);
        app_state.text_rows[index] = row;
        app_state.text_columns[index] = end + static_cast<int>(after_folder_label.size());
    }
}

/// index: into checkbox_setting_table.
void draw_check(std::size_t index)
{
    const int row = app_state.checkbox_rows[index];
    if (row <= 0)
        return;
    const bool is_on = (app_state.setting_flags & checkbox_setting_table[index].bit) != 0;
    glyphs_attribute(app_state.settings_win, colour::label, true);
    glyphs_write_at(app_state.settings_win, row, check_column, is_on ? "X" : " ");
}

/// index: into text_setting_table.
void draw_folder(std::size_t index)
{
    const char* folder = app_state.setting_texts != nullptr
                             ? app_state.setting_texts[text_setting_table[index].index]
                             : nullptr;
    if (folder == nullptr || app_state.text_rows[index] < 0)
        return;
    glyphs_attribute(app_state.settings_win, colour::text, true);
    glyphs_write_to_frame(app_state.settings_win, app_state.text_rows[index],
                          app_state.text_columns[index], folder);
}

void blank_folder(std::size_t index)
{
    const int column = app_state.text_columns[index];
    glyphs_attribute(app_state.settings_win, colour::text, true);
    line_blank(app_state.settings_win, app_state.text_rows[index], column,
               getmaxx(app_state.settings_win) - 1 - column);
}

/// A slash left at the end would have a link followed, and be in the names of logs.
void trim_slashes(char* folder)
{
    while (std::string_view{folder}.ends_with('/'))
        strip_trailing_slash(folder);
}

/// Asks for a folder. Null unless the answer names one that is there.
heap_text ask_folder(const text_setting& setting)
{
    // Kept on purpose: the question shows the sign before the hot key's letter.
    // Test: settings_folders.the_prompt_is_60_wide_and_has_the_raw_label_and_the_folder.
    heap_text folder{prompt_input(folder_size, setting.label, hint_or_cancel,
                                  app_state.setting_texts[setting.index])};
    if (!folder)
        return nullptr;
    trim_slashes(folder.get());
    // Kept on purpose: a link to a folder does not count as one, and nothing says what is wrong.
    // Test: settings_key_press.refuses_anything_but_a_folder.
    struct stat status = {};
    if (lstat(folder.get(), &status) == 0 && S_ISDIR(status.st_mode))
        return folder;
    beep();
    return nullptr;
}

void edit_folder(std::size_t index)
{
    const text_setting& setting = text_setting_table[index];
    if (app_state.setting_texts == nullptr)
        return;
    heap_text folder = ask_folder(setting);
    if (!folder)
        return;
    blank_folder(index);
    std::free(app_state.setting_texts[setting.index]);
    app_state.setting_texts[setting.index] = folder.release();
    draw_folder(index);
}

} // namespace

void settings_dialog()
{
    WINDOW* window = app_state.settings_win;
    page_titles_print(window, "[ ncurses tovrik client - Settings ]",
                      "[ To switch use ALT+highlighted Key - To exit press ^E ]");
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::text, false);
    const int separator_row = draw_checkboxes() + gap_rows;
    draw_separator(separator_row);
    draw_folder_labels(separator_row + 1 + gap_rows);
}

void settings_values_draw()
{
    for (std::size_t index = 0; index < checkbox_setting_count; ++index)
        draw_check(index);
    for (std::size_t index = 0; index < setting_text_count; ++index)
        draw_folder(index);
}

void settings_key(int key)
{
    // Kept on purpose: hot keys work while the page is hidden, too.
    // Test: settings_page.takes_hot_keys_without_showing_anything_while_hidden.
    for (std::size_t index = 0; checkbox_setting_table[index].bit != checkbox_table_end; ++index) {
        if (checkbox_setting_table[index].hot_key != key)
            continue;
        app_state.setting_flags ^= checkbox_setting_table[index].bit;
        draw_check(index);
    }
    for (std::size_t index = 0; text_setting_table[index].kind != nullptr; ++index) {
        if (text_setting_table[index].hot_key == key)
            edit_folder(index);
    }
    if (app_state.settings_shown != 0 && app_state.settings_win != nullptr)
        window_show(app_state.settings_win);
}
