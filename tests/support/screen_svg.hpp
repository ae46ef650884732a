// screen_svg.hpp - what a terminal shows as a picture: SVG that needs nothing beside it.
#pragma once

#include "support/terminal_screen.hpp"

#include <string>
#include <string_view>

/// The size of a whole picture with the window's frame and title bar, in the same units.
int screen_svg_width(int columns);
int screen_svg_height(int rows);

/// The screen in colour, in a window of its own. `title`: UTF-8, stands in the title bar. The same
/// screen and title always give the same bytes. Box characters are drawn as lines, so that they
/// meet whatever font there is; colours beyond the first sixteen count as the default ones.
std::string screen_svg(const terminal_screen& screen, std::string_view title);
