// redraw.hpp - repaints what is in front: the panes, the settings page or the help.
#pragma once

/// Paints what is in front whole, whether its content has changed or not: the settings page or the
/// help when one is shown, else the four panes.
void redraw_all();

/// Brings the help to the front, or sends it back when it is there.
void help_toggle();
