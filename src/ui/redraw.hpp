// redraw.hpp - repaints whatever is in front: the panes, the settings page or the help.
#pragma once

/// Paints the window in front whole: the settings page or the help when one is shown, else the four
/// panes. Needs no content of theirs to have changed.
void redraw_all();

/// Brings the help to the front, or sends it back when it is there.
void help_toggle();
