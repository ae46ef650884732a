// popup.hpp - the transient windows in front: popup_win and dialog_win.
#pragma once

/// Erases and deletes popup_win and dialog_win and repaints what they covered. Nothing happens when
/// neither exists.
void popup_close();

/// Shows popup_win and dialog_win, where they exist, above what has been drawn under them since.
void popup_raise();
