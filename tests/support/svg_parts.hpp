// svg_parts.hpp - the parts of which a picture of a screen is made.
#pragma once

#include <string>
#include <string_view>

/// The size of one cell of such a picture, in its own units.
constexpr int svg_cell_width = 9;
constexpr int svg_cell_height = 18;

/// ` name="value"`; the value is not escaped.
std::string svg_attribute(const char* name, std::string_view value);
std::string svg_attribute(const char* name, int value);

/// Text escaped for an element or an attribute.
std::string svg_escaped(std::string_view text);

/// Whether a cell's text is one of the single-line box characters.
bool is_box_character(std::string_view text);

/// Path data of a box character in the cell whose top left corner is (x, y): its arms from the
/// middle to the edge, so that they meet those of the next cells. Empty for other texts.
std::string box_strokes(std::string_view text, int x, int y);
