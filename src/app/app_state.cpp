// app_state.cpp - see app_state.hpp.
#include "app/app_state.hpp"

#include <algorithm>
#include <iterator>

application_state app_state;

application_state::application_state()
{
    std::fill(std::begin(checkbox_rows), std::end(checkbox_rows), -1);
    std::fill(std::begin(text_rows), std::end(text_rows), -1);
    std::fill(std::begin(text_columns), std::end(text_columns), -1);
}

server_entry* selected_server()
{
    return server_at(app_state.servers, app_state.selected - 1);
}

bool is_setting_on(setting_flag flag)
{
    return (app_state.setting_flags & flag) != 0;
}

const char* folder_setting(setting_text which)
{
    const bool is_set =
        app_state.setting_texts != nullptr && app_state.setting_texts[which] != nullptr;
    return is_set ? app_state.setting_texts[which] : unset_folder;
}
