// settings_page.hpp - draws the settings page from the settings tables, and takes its keys.
#pragma once

/// Draws what never changes (title, hint, boxes, labels, separator) into settings_win and records
/// in app_state where each row stands.
void settings_dialog();

/// Draws all checks and folders as they are set now: "X" for a switch that is on, a blank for one
/// that is off, and folders cut at the frame. Lines without a switch and folders that were never
/// set are left out.
void settings_values_draw();

/// Acts on a key typed in the key loop: switches the setting whose hot key it is, or asks for the
/// folder whose hot key it is. Other keys are ignored. Works whether the page is shown or hidden.
void settings_key(int key);
