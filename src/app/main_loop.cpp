// main_loop.cpp - see main_loop.hpp.
//
// Holds the key table: what each key does, and what it needs.
#include "app/main_loop.hpp"

#include "app/app_state.hpp"
#include "app/settings_toggle.hpp"
#include "base/pause.hpp"
#include "data/settings_page.hpp"
#include "net/capability_table.hpp"
#include "net/connect_commands.hpp"
#include "net/server_list_fetch.hpp"
#include "services/database_update.hpp"
#include "services/mailing.hpp"
#include "services/pager.hpp"
#include "services/report.hpp"
#include "services/server_info.hpp"
#include "ui/keys.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace
{

constexpr long round_us = 40'000;

void move_selection(std::int32_t step)
{
    popup_close();
    server_list_select(app_state.selected + step);
}

void move_down()
{
    const bool can_move = app_state.selected >= 1 && app_state.selected < app_state.servers->count;
    if (can_move && app_state.settings_shown == 0)
        move_selection(1);
}

void move_up()
{
    if (app_state.selected >= 2 && app_state.settings_shown == 0)
        move_selection(-1);
}

void toggle_help()
{
    popup_close();
    help_toggle();
}

void fetch_servers()
{
    popup_close();
    start_server_list_fetch();
}

/// What a command needs before it runs. Without it, nothing happens and nothing is said.
enum class command_need : std::uint8_t { nothing, selection, connection };

struct key_command {
    int key;
    command_need need;
    void (*action)();
    const capability* service = nullptr;            // null: none needed
    void (*dialog)(server_entry& server) = nullptr; // of the service, in place of an action
};

constexpr key_command key_commands[] = {
    {control('A'), command_need::connection, nullptr, &capability_of(&server_entry::can_modify),
     add_entries_dialog},
    {control('D'), command_need::selection, disconnect_selected_server},
    {control('E'), command_need::nothing, settings_toggle},
    {control('H'), command_need::nothing, toggle_help},
    {control('I'), command_need::nothing, server_info_toggle},
    {key_enter, command_need::connection, nullptr, &capability_of(&server_entry::can_mail),
     mailing_dialog},
    {control('L'), command_need::nothing, connect_selected_server},
    {control('O'), command_need::connection, nullptr, &capability_of(&server_entry::can_report),
     report_request},
    {control('P'), command_need::connection, nullptr, &capability_of(&server_entry::can_page),
     pager_dialog},
    {control('R'), command_need::nothing, fetch_servers},
    {KEY_DOWN, command_need::nothing, move_down},
    {KEY_UP, command_need::nothing, move_up},
};

bool is_met(command_need need, const server_entry* server)
{
    if (need == command_need::nothing)
        return true;
    return server != nullptr && (need == command_need::selection || server->socket_fd != 0);
}

void run_command(const key_command& command)
{
    server_entry* server = selected_server();
    if (!is_met(command.need, server))
        return;
    if (command.action != nullptr)
        return command.action();
    const capability_key& key = command.service->key;
    if (server->*key.permission != 0)
        return command.dialog(*server);
    beep();
    status_report(colour::error, key.refusal, server_display_name(*server));
}

/// A key that is not a command may be a hot key of the settings.
void dispatch_key(int key)
{
    const auto* command = std::ranges::find(key_commands, key, &key_command::key);
    if (command != std::end(key_commands))
        run_command(*command);
    else
        settings_key(key);
}

} // namespace

void main_loop()
{
    while (true) {
        const int key = key_read(app_state.server_pane);
        if (key == key_exit)
            return;
        if (key != ERR)
            dispatch_key(key);
        pause_for(round_us);
    }
}
