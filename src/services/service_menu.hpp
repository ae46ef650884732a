// service_menu.hpp - the numbered menu of the services that have several requests.
#pragma once

#include <span>

struct menu_entry {
    char key; // '1' and so on, in order
    const char* label;
};

/// Shows a menu and waits for a choice; servers go on being served meanwhile. Any open popup is
/// closed first.
/// width, height: of the box, frame included. hint: shown on its bottom frame.
/// The key chosen; '\0' for Escape and after ten seconds.
char service_menu(std::span<const menu_entry> table, int width, int height, const char* hint);

/// The hint of menus of five entries.
constexpr const char* hint_of_five = "[ Press 1-5 or ESC to quit ]";
