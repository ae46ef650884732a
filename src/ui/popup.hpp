// popup.hpp - the transient windows in front: popup_win and dialog_win.
#pragma once

/// Erases and deletes popup_win and dialog_win and repaints what they covered. Nothing happens when
/// neither exists.
void popup_close();
