// help.hpp - fills the help window, which covers the whole screen.
#pragma once

/// The help text's name within the home folder.
constexpr const char* help_name = "ncursesclient.hlp";

/// Writes title and hint into help_win, and the user's help text if there is one; of a long text,
/// its end. Tabs go to the next multiple of 8 columns. Call once for each window made.
void help_fill();
