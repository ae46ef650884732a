// colours.hpp - the fifteen colour pairs, and what each is for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <ncurses.h>

/// The pairs, by the numbers that curses knows them by.
enum class colour : short {
    frame = 1, // background of every window, frames, titles, labels of menus
    text = 2,  // plain text, names in the server list (bold)
    spare_1 = 3,
    spare_2 = 4,
    error = 5,   // errors and refusals
    notice = 6,  // the title line and progress
    success = 7, // what has worked
    bar = 8,     // the key line and the highlight bar
    spare_3 = 9,
    statistics = 10, // the line of flight statistics
    secondary = 11,  // identification, contacts, uptime
    spare_4 = 12,
    spare_5 = 13,
    spare_6 = 14,
    server_text = 15, // a server's texts and hints

    // Further uses of the same pairs.
    label = success, // labels, markers, typed text
    menu_key = error,
};

struct colour_pair {
    colour name;
    short foreground;
    short background;
};

// Kept on purpose: pairs that nothing uses are defined too, even with the colours of others.
// Test: screen_building.gives_every_pair_its_colours_whether_used_or_not.
constexpr colour_pair colour_pairs[] = {
    {colour::frame, COLOR_BLUE, COLOR_BLACK},
    {colour::text, COLOR_WHITE, COLOR_BLACK},
    {colour::spare_1, COLOR_BLUE, COLOR_WHITE},
    {colour::spare_2, COLOR_WHITE, COLOR_CYAN},
    {colour::error, COLOR_RED, COLOR_BLACK},
    {colour::notice, COLOR_YELLOW, COLOR_BLACK},
    {colour::success, COLOR_GREEN, COLOR_BLACK},
    {colour::bar, COLOR_BLACK, COLOR_WHITE},
    {colour::spare_3, COLOR_WHITE, COLOR_BLACK},
    {colour::statistics, COLOR_WHITE, COLOR_BLUE},
    {colour::secondary, COLOR_CYAN, COLOR_BLACK},
    {colour::spare_4, COLOR_RED, COLOR_BLUE},
    {colour::spare_5, COLOR_BLUE, COLOR_BLACK},
    {colour::spare_6, COLOR_WHITE, COLOR_BLACK},
    {colour::server_text, COLOR_MAGENTA, COLOR_BLACK},
};
static_assert(std::size(colour_pairs) == 15);
static_assert(std::ranges::adjacent_find(colour_pairs, std::ranges::greater_equal{},
                                         &colour_pair::name) == std::end(colour_pairs),
              "one row for each pair, in ascending order");

/// What stands in for a pair's colours on a terminal without any: reverse video for the bar, which
/// nothing else would show.
inline attr_t colour_substitute(colour pair)
{
    return pair == colour::bar && !has_colors() ? A_REVERSE : A_NORMAL;
}

/// The pair's number for curses.
constexpr short colour_number(colour pair)
{
    return static_cast<short>(pair);
}
