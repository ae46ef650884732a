// start_stop.cpp - see start_stop.hpp.
#include "app/start_stop.hpp"

#include "app/app_state.hpp"
#include "app/job_control.hpp"
#include "base/signal_door.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "data/owned_text.hpp"
#include "net/connection_end.hpp"
#include "net/log_files.hpp"
#include "net/poll.hpp"
#include "net/server_list_fetch.hpp"
#include "ui/curses_screen.hpp"
#include "ui/popup.hpp"
#include "ui/screen.hpp"
#include "ui/server_pane.hpp"
#include "ui/terminal_output.hpp"
#include "ui/terminal_rescue.hpp"
#include "ui/window.hpp"

#include <csignal>
#include <cstdlib>

#include <malloc.h>
#include <unistd.h>

namespace
{

constexpr unsigned first_poll_s = 3;

/// Gives up the start with one line on standard error.
bool fail_start(const char* line)
{
    std::fputs(line, stderr);
    if (app_state.servers != nullptr)
        collection_destroy(app_state.servers);
    app_state.servers = nullptr;
    return false;
}

void leave_connections()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index)
        connection_end_at_exit(*server_at(app_state.servers, index));
}

void free_settings_and_markers()
{
    for (std::size_t index = 0; app_state.setting_texts != nullptr && index < setting_text_count;
         ++index)
        owned_text_clear(app_state.setting_texts[index]);
    std::free(app_state.setting_texts);
    app_state.setting_texts = nullptr;
    owned_text_clear(app_state.list_markers);
    app_state.list_markers_count = 0;
}

/// No handler may run while the program is taken down.
void silence_signals()
{
    alarm(0);
    signal_silence(SIGALRM);
    signal_silence(SIGWINCH);
    // Not ignored, or the kernel would reap children whose ids are still to be killed.
    signal_install(SIGCHLD, nullptr);
}

/// Builds the screen, reads the configuration and shows both. False when there is no screen.
bool show_first_screen()
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
        return fail_start("Error creating servercollection\n");
    job_control_init();
    terminal_rescue_arm();
    if (!screen_start()) {
        terminal_rescue_disarm();
        return fail_start("Unable to init ncurses library\n");
    }
    if (!show_first_screen()) {
        // The terminal stays as curses set it, so that what it shows can still be read.
        terminal_output_finish();
        terminal_rescue_disarm();
        return fail_start("Unable to init ncurses windows\n");
    }
    screen_settle();
    // Reading the configuration took several times its size in memory.
    malloc_trim(0);
    if (is_setting_on(FetchOnStart))
        start_server_list_fetch();
    signal_install(SIGALRM, poll_servers);
    alarm(first_poll_s);
    return true;
}

void app_shutdown()
{
    silence_signals();
    popup_close();
    screen_clear();
    if (is_setting_on(SaveToOne))
        close_shared_log();
    app_state.shared_log = nullptr;
    screen_end();
    terminal_rescue_disarm();
    server_list_fetch_finish();
    leave_connections();
    if (is_setting_on(SaveOnExit))
        config_save();
    collection_destroy(app_state.servers);
    app_state.servers = nullptr;
    free_settings_and_markers();
}
