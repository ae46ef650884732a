// config_target.cpp - any file is loaded, saved, and loaded again: the second time gives the first
// one's servers and settings, and the file is what config_text writes for them.
#include "app/app_state.hpp"
#include "bench/null_screen.hpp"
#include "data/config_file.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "net/directory_lines.hpp"
#include "support/config_text.hpp"

#include <algorithm>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

void file_write(const std::string& text)
{
    // The working folder is the home folder, and open() for writing is not for real here.
    const unique_file file{std::fopen(config_name, "w")};
    require(file != nullptr, "there is room for a file");
    std::fwrite(text.data(), 1, text.size(), file.get());
}

std::string file_read()
{
    const unique_file file{std::fopen(config_name, "r")};
    struct stat status = {};
    require(file != nullptr && fstat(fileno(file.get()), &status) == 0,
            "there is a file after saving");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    return text;
}

std::string text_of(const char* text)
{
    return text != nullptr ? text : "";
}

server_settings settings_of(const server_entry& server)
{
    const bool has_password = is_setting_on(SavePasswords);
    return {.name = server.ServerName,
            .port = std::to_string(server_port(server)),
            .alias = text_of(server.ServerAlias),
            .location = text_of(server.Location),
            .info = text_of(server.Info),
            .password = has_password ? text_of(server.Password) : "",
            .subcode = text_of(server.SubCode),
            .email = text_of(server.UseEMail)};
}

client_settings settings_now()
{
    client_settings settings{.acars_log = is_setting_on(ACARSLog),
                             .contact_info = is_setting_on(ContactInfo),
                             .save_passwords = is_setting_on(SavePasswords),
                             .flight_stats = is_setting_on(FlightStats),
                             .save_to_one = is_setting_on(SaveToOne),
                             .no_uplinks = is_setting_on(NoUplinks),
                             .fetch_on_start = is_setting_on(FetchOnStart),
                             .save_on_exit = is_setting_on(SaveOnExit),
                             .log_folder = folder_setting(LogFilePath),
                             .report_folder = folder_setting(ReportPath)};
    for (std::int32_t index = 0; index < app_state.servers->count; ++index)
        settings.servers.push_back(settings_of(*server_at(app_state.servers, index)));
    return settings;
}

/// What loading makes of saved settings: of two servers that were saved with one name and port, a
/// missing port being saved as the usual one, the first stays; the order is the list's.
client_settings reloaded(client_settings settings)
{
    const auto is_before = [](const server_settings& a, const server_settings& b) {
        return a.name != b.name ? a.name > b.name : std::stoi(a.port) < std::stoi(b.port);
    };
    std::set<std::pair<std::string, std::string>> known;
    std::erase_if(settings.servers, [&known](const server_settings& server) {
        return !known.emplace(server.name, server.port).second;
    });
    std::stable_sort(settings.servers.begin(), settings.servers.end(), is_before);
    return settings;
}

void state_forget()
{
    configuration_forget();
    app_state.selected = -1;
}

/// Saves into a folder without the former file, whose document would stay in memory.
std::string saved()
{
    unlink(config_name);
    config_save();
    return file_read();
}

void round_trip(const std::string& text)
{
    file_write(text);
    config_load();
    servers_check();
    const client_settings settings = settings_now();
    const std::string first = saved();
    require(first == config_text(settings), "what is saved is what was loaded");
    state_forget();
    config_load();
    servers_check();
    const std::string second = saved();
    require(second == config_text(reloaded(settings)), "what was saved comes back");
    state_forget();
    config_load();
    require(saved() == second, "from then on nothing changes");
}

/// Values from elsewhere may hold marks that the file's reader takes for tags; it must cope.
void survive(fuzz_input& input)
{
    app_state.setting_flags = input.number(255);
    app_state.setting_texts[ReportPath] = owned_or_none(input.text());
    while (!input.is_empty() && app_state.servers->count < 20) {
        std::string line = input.text();
        server_entry* entry = directory_entry_new(line.data());
        if (entry != nullptr && server_add(app_state.servers, entry) != -1)
            server_entry_free(entry);
    }
    saved();
    state_forget();
    config_load();
    servers_check();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    if (input.number(7) == 0)
        survive(input);
    else
        round_trip(input.text());
    return 0;
}
