// settings_toggle.cpp - see settings_toggle.hpp.
#include "app/settings_toggle.hpp"

#include "app/app_state.hpp"
#include "net/log_files.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

namespace
{

void apply_to_server(server_entry& entry)
{
    send_packet(entry.socket_fd, sent_uplink_setting, 0, 0, "%s",
                is_setting_on(NoUplinks) ? "1" : "0");
    if (entry.log_file != nullptr && !is_setting_on(ACARSLog))
        close_log_file(entry);
    else if (entry.log_file == nullptr && is_setting_on(ACARSLog))
        open_log_files(entry);
}

} // namespace

void settings_toggle()
{
    popup_close();
    app_state.settings_shown = app_state.settings_shown != 0 ? 0 : 1;
    app_state.is_help_over_settings = false;
    redraw_all();
    if (app_state.settings_shown == 0)
        apply_log_settings();
}

void apply_log_settings()
{
    if (!is_setting_on(SaveToOne))
        close_shared_log();
    else
        app_state.setting_flags &= ~static_cast<std::uint32_t>(ACARSLog);
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* entry = server_at(app_state.servers, index);
        if (entry->socket_fd != 0)
            apply_to_server(*entry);
    }
}
