// settings_page.hpp - draws the full-screen settings page from the settings tables.
#pragma once

#include <cstddef>

/// Draws the static page (title, hint, boxes, labels, separator) into settings_win and records in
/// app_state where each row stands.
void settings_dialog();

/// Draws the mark of one switch: "X" while it is on, a blank while it is off. Rows that are not on
/// the page are left out. index: into checkbox_setting_table.
void settings_mark_draw(std::size_t index);

/// Draws the value of one folder after its label, cut at the frame. Nothing while it was never set.
/// index: into text_setting_table.
void settings_folder_draw(std::size_t index);

/// Draws all marks and folders as they are set now.
void settings_values_draw();

/// Acts on a key typed in the key loop: switches the setting whose hot key it is, or asks for the
/// folder whose hot key it is. Other keys are ignored. Works whether the page is shown or hidden.
void settings_key(int key);
