// popup.cpp - see popup.hpp.
#include "ui/popup.hpp"

#include "app/app_state.hpp"
#include "ui/redraw.hpp"
#include "ui/window.hpp"

#include <utility>

void popup_close()
{
    if (app_state.popup_win == nullptr && app_state.dialog_win == nullptr)
        return;
    const screen_batch together;
    window_erase(std::exchange(app_state.popup_win, nullptr));
    window_erase(std::exchange(app_state.dialog_win, nullptr));
    redraw_all();
}
