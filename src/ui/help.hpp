// help.hpp - fills the full-screen help window.
#pragma once

/// Writes title and hint into help_win. Called once for each window made.
void help_fill();
