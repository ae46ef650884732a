// redraw.hpp - repaints what is in front: the panes, the settings page or the help.
#pragma once

/// Paints what is in front whole, whether its content has changed or not: the page in front, or
/// the four panes and what is beside them. Open windows stay on top.
void redraw_all();

/// Brings the help to the front, even of the settings, or sends it back when it is shown.
void help_toggle();
