// svg_parts.cpp - see svg_parts.hpp.
#include "support/svg_parts.hpp"

#include <algorithm>
#include <iterator>

namespace
{

/// The arms that lead from the middle of a box character to its edges.
struct box_arms {
    std::string_view text;
    bool up;
    bool right;
    bool down;
    bool left;
};

constexpr box_arms box_table[] = {
    {"─", false, true, false, true}, {"│", true, false, true, false},
    {"┌", false, true, true, false}, {"┐", false, false, true, true},
    {"└", true, true, false, false}, {"┘", true, false, false, true},
    {"├", true, true, true, false},  {"┤", true, false, true, true},
    {"┬", false, true, true, true},  {"┴", true, true, false, true},
    {"┼", true, true, true, true},
};

const box_arms* find_box(std::string_view text)
{
    const auto* found = std::ranges::find(box_table, text, &box_arms::text);
    return found == std::end(box_table) ? nullptr : found;
}

std::string draw_stroke(int x, int y, char direction, int length)
{
    if (length == 0)
        return {};
    return "M" + std::to_string(x) + " " + std::to_string(y) + direction + std::to_string(length);
}

} // namespace

std::string svg_attribute(const char* name, std::string_view value)
{
    return std::string{" "} + name + "=\"" + std::string{value} + '"';
}

std::string svg_attribute(const char* name, int value)
{
    return svg_attribute(name, std::to_string(value));
}

std::string svg_escaped(std::string_view text)
{
    std::string safe;
    for (const char byte : text) {
        switch (byte) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += byte;
        }
    }
    return safe;
}

bool is_box_character(std::string_view text)
{
    return find_box(text) != nullptr;
}

std::string box_strokes(std::string_view text, int x, int y)
{
    const box_arms* arms = find_box(text);
    if (arms == nullptr)
        return {};
    const int middle = svg_cell_width / 2;
    const int half = svg_cell_height / 2;
    const int left = arms->left ? 0 : middle;
    const int right = arms->right ? svg_cell_width : middle;
    const int top = arms->up ? 0 : half;
    const int bottom = arms->down ? svg_cell_height : half;
    return draw_stroke(x + left, y + half, 'h', right - left) +
           draw_stroke(x + middle, y + top, 'v', bottom - top);
}
