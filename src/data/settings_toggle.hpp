// settings_toggle.hpp - puts changed settings into effect.
#pragma once

/// Opens and closes log files as the switches ask for, and tells every connected server whether
/// uplinks are wanted. One common log switches the servers' own logs off.
void apply_log_settings();
