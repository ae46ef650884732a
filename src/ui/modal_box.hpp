// modal_box.hpp - the box of a prompt, a menu or a list while it waits for the user.
//
// The box belongs to the function that opened it: resizes and closing popups leave it standing. It
// is fitted to the terminal and drawn whole, on top, in every round, so that nothing printed under
// it meanwhile shows through.
#pragma once

#include "ui/colours.hpp"

#include <ctime>
#include <ncurses.h>
#include <string_view>

/// How long a box waits for the user.
constexpr std::time_t modal_timeout_s = 10;

struct box_place {
    int width; // cells, frame included
    int height;
    int column;
    int row;
};

struct modal_box {
    WINDOW* window = nullptr; // null on a terminal too small for it
    int made_for_lines = 0;   // the terminal's size that it was made for
    int made_for_columns = 0;
};

/// Opens the box, or opens it anew when the terminal's size has changed since, and paints its frame
/// and a blank interior. place: for the terminal's present size; negative columns and rows count as
/// 0.
void modal_box_fit(modal_box& box, const box_place& place);

/// Writes a text into the box in a colour pair, cut where the frame's right edge begins.
void modal_box_write(const modal_box& box, int row, int column, colour pair, bool bold,
                     std::string_view text);

/// Puts the box on the screen, above everything else.
void modal_box_show(const modal_box& box);

/// Erases the box from the screen and deletes it; what it covered is not repainted.
void modal_box_erase(modal_box& box);

/// Erases the box and repaints what it covered.
void modal_box_close(modal_box& box);
