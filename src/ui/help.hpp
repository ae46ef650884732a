// help.hpp - fills the full-screen help window.
#pragma once

/// The help text's name within the home folder.
constexpr const char* help_name = "ncursesclient.hlp";

/// Writes title and hint into help_win, and the user's help text if there is one. What is longer
/// than the window pushes its own beginning out at the top. Called once for each window made.
void help_fill();
