// modal_box.hpp - the box of a prompt, a menu or a list while it waits for the user.
//
// The box belongs to the function that opened it: resizes and closing popups leave it alone. In
// every round it is fitted to the terminal and drawn whole, on top, so that nothing that was
// printed under it meanwhile shows through.
#pragma once

#include "ui/colours.hpp"
#include "ui/layout.hpp"
#include "ui/window.hpp"

#include <ctime>
#include <string_view>

/// How long a box waits for the user.
constexpr std::time_t modal_timeout_s = 10;

struct modal_box {
    unique_window window;   // null on a terminal too small for it
    int made_on_screen = 0; // the number of the screen that the window was made on; 0: none
};

/// Whether a box that has waited since `start` has waited long enough. When the clock was set back
/// behind `start`, the time begins again.
bool modal_time_is_over(std::time_t& start);

/// While one exists, a box waits for the user, and has every key.
class modal_wait
{
public:
    modal_wait();
    ~modal_wait();
    modal_wait(const modal_wait&) = delete;
    modal_wait& operator=(const modal_wait&) = delete;
};

/// Whether any box waits for the user.
bool modal_box_is_open();

/// Opens the box, or opens it again if the terminal was resized, and paints its frame and a
/// blank interior. area: for the terminal's present size; a negative column or row counts as 0.
void modal_box_fit(modal_box& box, const screen_area& area);

/// Writes a text into the box in a colour pair, up to the right frame.
void modal_box_write(const modal_box& box, int row, int column, colour pair, bool bold,
                     std::string_view text);

/// Shows the box above everything else.
void modal_box_show(const modal_box& box);

/// Erases the box from the screen and deletes it. What it covered is not repainted.
void modal_box_erase(modal_box& box);

/// Erases the box, deletes it and repaints what it covered.
void modal_box_close(modal_box& box);
