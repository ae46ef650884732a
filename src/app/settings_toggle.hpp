// settings_toggle.hpp - shows and hides the settings page, and puts changed settings into effect.
#pragma once

/// The user's command for the settings: brings the page to the front, or sends it back and applies
/// what was changed.
void settings_toggle();

/// Opens and closes log files as the switches ask for, and tells every connected server whether
/// uplinks are wanted. One common log switches the servers' own logs off.
void apply_log_settings();
