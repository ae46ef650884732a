// screen_svg.hpp - a terminal's screen as a picture: self-contained SVG.
#pragma once

#include "support/terminal_screen.hpp"

#include <string>
#include <string_view>

/// The size of a whole picture, including the window's frame and title bar, in the same units.
int screen_svg_width(int columns);
int screen_svg_height(int rows);

/// The screen in colour, inside a window. `title`: UTF-8, for the title bar. The same screen and
/// title always give the same bytes. Box characters are drawn as lines, so that they meet in any
/// font; colours beyond the first sixteen count as the default ones.
std::string screen_svg(const terminal_screen& screen, std::string_view title);
