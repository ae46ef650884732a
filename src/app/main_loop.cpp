// main_loop.cpp - see main_loop.hpp.
//
// Holds the key table, with what each command needs.
#include "app/main_loop.hpp"

#include "app/app_state.hpp"
#include "base/pause.hpp"
#include "data/settings_page.hpp"
#include "data/settings_toggle.hpp"
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

void selection_move(std::int32_t step)
{
    popup_close();
    server_list_select(app_state.selected + step);
}

void selection_down()
{
    const bool can_move = app_state.selected >= 1 && app_state.selected < app_state.servers->count;
    if (can_move && app_state.settings_shown == 0)
        selection_move(1);
}

void selection_up()
{
    if (app_state.selected >= 2 && app_state.settings_shown == 0)
        selection_move(-1);
}

void help_command()
{
    popup_close();
    help_toggle();
}

void fetch_command()
{
    popup_close();
    start_server_list_fetch();
}

/// What a command asks of the selected server before it runs; what is missing is met with silence.
enum class command_need : std::uint8_t { nothing, selection, connection };

struct key_command {
    int key;
    command_need need;
    void (*action)();
    const capability* service = nullptr;            // null: none asked for
    void (*dialog)(server_entry& server) = nullptr; // of the service, in place of an action
};

constexpr key_command key_commands[] = {
    {control('A'), command_need::connection, nullptr, &capability_of(&server_entry::can_modify),
     add_entries_dialog},
    {control('D'), command_need::selection, disconnect_selected_server},
    {control('E'), command_need::nothing, settings_toggle},
    {control('H'), command_need::nothing, help_command},
    {control('I'), command_need::nothing, server_info_toggle},
    {key_enter, command_need::connection, nullptr, &capability_of(&server_entry::can_mail),
     mailing_dialog},
    {control('L'), command_need::nothing, connect_selected_server},
    {control('O'), command_need::connection, nullptr, &capability_of(&server_entry::can_report),
     report_request},
    {control('P'), command_need::connection, nullptr, &capability_of(&server_entry::can_page),
     pager_dialog},
    {control('R'), command_need::nothing, fetch_command},
    {KEY_DOWN, command_need::nothing, selection_down},
    {KEY_UP, command_need::nothing, selection_up},
};

bool is_met(command_need need, const server_entry* server)
{
    if (need == command_need::nothing)
        return true;
    return server != nullptr && (need == command_need::selection || server->socket_fd != 0);
}

void command_run(const key_command& command)
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

/// Every key that is no command may be a hot key of the settings.
void key_dispatch(int key)
{
    const auto* command = std::ranges::find(key_commands, key, &key_command::key);
    if (command != std::end(key_commands))
        command_run(*command);
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
            key_dispatch(key);
        pause_for(round_us);
    }
}
