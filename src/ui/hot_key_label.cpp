// hot_key_label.cpp - see hot_key_label.hpp.
#include "ui/hot_key_label.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"
#include "ui/glyphs.hpp"

#include <cstring>

namespace
{

void draw_letter(WINDOW* window, int row, int column, char letter)
{
    glyphs_attribute(window, colour::text, true);
    glyphs_write_at(window, row, column, {&letter, 1});
    glyphs_attribute(window, colour::text, false);
}

} // namespace

int hot_key_label_draw(WINDOW* window, int row, int column, const char* label)
{
    constexpr char sign[] = {hot_key_sign, '\0'};
    const heap_text text{str_replace(str_dup(label), sign, nullptr)};
    if (!text)
        return 0;
    const auto length = static_cast<int>(std::strlen(text.get()));
    glyphs_write_at(window, row, column, text.get());
    const char* found = std::strchr(label, hot_key_sign);
    if (found == nullptr)
        return length;
    const auto index = static_cast<int>(found - label);
    // Kept on purpose: the letter's column on the page is compared with the label's length, so a
    // letter far to the right stays plain.
    // Test: hot_key_label.leaves_a_letter_far_to_the_right_plain.
    if (column + index < length)
        draw_letter(window, row, column + index, text.get()[index]);
    return length;
}
