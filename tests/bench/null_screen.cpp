// null_screen.cpp - see null_screen.hpp.
#include "bench/null_screen.hpp"

#include "app/app_state.hpp"
#include "ui/keys.hpp"
#include "ui/screen.hpp"
#include "ui/server_pane.hpp"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace
{

/// Frees all texts of the entries, including those that outlive their entry in the program.
void release_servers()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const server_entry* server = server_at(app_state.servers, index);
        std::free(server->UseEMail);
        std::free(server->SubCode);
    }
    collection_destroy(app_state.servers);
    app_state.servers = nullptr;
}

void release_folders()
{
    for (std::size_t index = 0; index < setting_text_count; ++index)
        std::free(std::exchange(app_state.setting_texts[index], nullptr));
}

[[noreturn]] void give_up()
{
    std::perror("cannot make a screen without a terminal");
    std::abort();
}

void set_environment(const temp_home& home)
{
    setenv("HOME", home.path().c_str(), 1);
    setenv("LINES", "24", 1);
    setenv("COLUMNS", "80", 1);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    if (chdir(home.path().c_str()) != 0)
        give_up();
}

} // namespace

null_screen::null_screen(const char* keys)
    : input(std::fopen(keys, "r")), output(std::fopen("/dev/null", "w"))
{
    set_environment(folder);
    if (input && output)
        app_state.terminal = newterm("screen-256color", output.get(), input.get());
    if (app_state.terminal == nullptr)
        give_up();
    app_state.screen = stdscr;
    use_legacy_coding(1);
    keys_init();
    app_state.servers = server_collection_new();
    app_state.setting_texts = static_cast<char**>(std::calloc(setting_text_count, sizeof(char*)));
    if (app_state.servers == nullptr || app_state.setting_texts == nullptr || screen_build() == 0)
        give_up();
    server_list_draw();
}

null_screen::~null_screen()
{
    screen_clear();
    screen_end();
    release_servers();
    release_folders();
    std::free(std::exchange(app_state.setting_texts, nullptr));
    std::free(std::exchange(app_state.list_markers, nullptr));
    app_state.list_markers_count = 0;
}

void configuration_forget()
{
    release_servers();
    release_folders();
    app_state.servers = server_collection_new();
    app_state.setting_flags = 0;
    if (app_state.servers == nullptr)
        give_up();
}
