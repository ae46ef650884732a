// start_stop.cpp - see start_stop.hpp.
#include "app/start_stop.hpp"

#include "app/app_state.hpp"
#include "app/signals.hpp"
#include "base/signal_door.hpp"
#include "data/config_file.hpp"
#include "net/connection.hpp"
#include "net/log_files.hpp"
#include "net/poll.hpp"
#include "net/server_list_fetch.hpp"
#include "ui/curses_screen.hpp"
#include "ui/popup.hpp"
#include "ui/screen.hpp"
#include "ui/server_pane.hpp"
#include "ui/window.hpp"

#include <csignal>
#include <cstdlib>

#include <malloc.h>
#include <unistd.h>

namespace
{

constexpr unsigned first_poll_s = 3;

bool start_fail(const char* line)
{
    std::fputs(line, stderr);
    if (app_state.servers != nullptr)
        collection_destroy(app_state.servers);
    app_state.servers = nullptr;
    return false;
}

void connections_leave()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* entry = server_at(app_state.servers, index);
        report_reception_drop(*entry);
        if (entry->socket_fd != 0)
            connection_leave(*entry);
        close_log_file(*entry);
    }
}

void settings_and_markers_free()
{
    for (std::size_t index = 0; app_state.setting_texts != nullptr && index < setting_text_count;
         ++index)
        std::free(app_state.setting_texts[index]);
    std::free(app_state.setting_texts);
    app_state.setting_texts = nullptr;
    std::free(app_state.list_markers);
    app_state.list_markers = nullptr;
    app_state.list_markers_count = 0;
}

/// No handler may find what is being taken down.
void signals_silence()
{
    alarm(0);
    signal_silence(SIGALRM);
    signal_silence(SIGWINCH);
    // Not ignored: the kernel would reap children whose ids are still to be ended.
    signal_install(SIGCHLD, nullptr);
}

/// Builds the screen, reads the configuration and shows both. False when there is no screen.
bool first_screen_show()
{
    const screen_batch together;
    if (screen_build() == 0)
        return false;
    app_state.setting_texts = static_cast<char**>(std::calloc(setting_text_count, sizeof(char*)));
    signal_install(SIGWINCH, on_resize);
    config_load();
    server_list_draw();
    screen_memory_check();
    return may_draw();
}

} // namespace

bool app_start()
{
    app_state.servers = server_collection_new();
    if (app_state.servers == nullptr)
        return start_fail("Error creating servercollection\n");
    signals_init();
    terminal_guard(true);
    if (!screen_start()) {
        terminal_guard(false);
        return start_fail("Unable to init ncurses library\n");
    }
    terminal_guard(true);
    if (!first_screen_show()) {
        // The terminal is left as curses set it, so that what it shows can still be read.
        terminal_guard(false);
        return start_fail("Unable to init ncurses windows\n");
    }
    screen_settle();
    // Reading the configuration took several times its size.
    malloc_trim(0);
    if (is_setting_on(FetchOnStart))
        start_server_list_fetch();
    signal_install(SIGALRM, poll_servers);
    alarm(first_poll_s);
    return true;
}

void app_shutdown()
{
    signals_silence();
    popup_close();
    screen_clear();
    if (is_setting_on(SaveToOne))
        close_shared_log();
    app_state.shared_log = nullptr;
    screen_end();
    terminal_guard(false);
    server_list_fetch_finish();
    connections_leave();
    if (is_setting_on(SaveOnExit))
        config_save();
    collection_destroy(app_state.servers);
    app_state.servers = nullptr;
    settings_and_markers_free();
}
