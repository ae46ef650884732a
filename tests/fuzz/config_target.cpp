// config_target.cpp - any file is loaded, saved, and loaded again: the second load gives the same
// servers and settings as the first, and the file is what config_text writes for them.
#include "app/app_state.hpp"
#include "bench/null_screen.hpp"
#include "data/config_file.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "data/xml.hpp"
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

void write_file(const std::string& text)
{
    // The working folder is the home folder, and open() for writing is replaced here.
    const unique_file file{std::fopen(config_name, "w")};
    require(file != nullptr, "there is room for a file");
    std::fwrite(text.data(), 1, text.size(), file.get());
}

std::string read_file()
{
    const unique_file file{std::fopen(config_name, "r")};
    struct stat status = {};
    require(file != nullptr && fstat(fileno(file.get()), &status) == 0,
            "there is a file after saving");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    return text;
}

std::string copy_text(const char* text)
{
    return text != nullptr ? text : "";
}

server_settings copy_settings(const server_entry& server)
{
    const bool has_password = is_setting_on(SavePasswords);
    return {.name = server.ServerName,
            .port = std::to_string(server_port(server)),
            .alias = copy_text(server.ServerAlias),
            .location = copy_text(server.Location),
            .info = copy_text(server.Info),
            .password = has_password ? copy_text(server.Password) : "",
            .subcode = copy_text(server.SubCode),
            .email = copy_text(server.UseEMail)};
}

client_settings collect_settings()
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
        settings.servers.push_back(copy_settings(*server_at(app_state.servers, index)));
    return settings;
}

/// What loading makes of saved settings: of two servers with the same name and port, where no port
/// means the usual one, the first stays; the order is that of the list.
client_settings expect_reloaded(client_settings settings)
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

void forget_state()
{
    configuration_forget();
    app_state.selected = -1;
}

/// Saves into a folder without the old file, whose document would stay in memory.
std::string save()
{
    unlink(config_name);
    config_save();
    return read_file();
}

void check_round_trip(const std::string& text)
{
    write_file(text);
    config_load();
    servers_check();
    const client_settings settings = collect_settings();
    const std::string first = save();
    require(first == config_text(settings), "what is saved is what was loaded");
    forget_state();
    config_load();
    servers_check();
    const std::string second = save();
    require(second == config_text(expect_reloaded(settings)), "what was saved comes back");
    forget_state();
    config_load();
    require(save() == second, "from then on nothing changes");
}

/// What a saved text comes back as: brackets are blanks, and the reader cuts what is too long.
std::string expect_text(std::string text)
{
    std::replace(text.begin(), text.end(), '<', ' ');
    std::replace(text.begin(), text.end(), '>', ' ');
    return text.substr(0, xml_text_limit - 1);
}

client_settings expect_saved(client_settings settings)
{
    settings.report_folder = expect_text(settings.report_folder);
    for (server_settings& server : settings.servers) {
        for (std::string* text : {&server.name, &server.alias, &server.location, &server.info})
            *text = expect_text(*text);
    }
    return settings;
}

/// Whatever a directory sends and a user types, every server and setting comes back as its own.
void check_foreign_texts(fuzz_input& input)
{
    app_state.setting_flags = input.number(255);
    app_state.setting_texts[ReportPath] = owned_or_none(input.text());
    while (!input.is_empty() && app_state.servers->count < 20) {
        std::string line = input.text();
        server_entry* entry = directory_entry_new(line.data());
        if (entry != nullptr && server_add(app_state.servers, entry) != -1)
            server_entry_free(entry);
    }
    const client_settings settings = collect_settings();
    save();
    forget_state();
    config_load();
    servers_check();
    require(config_text(collect_settings()) == config_text(expect_reloaded(expect_saved(settings))),
            "servers and settings come back, each with its own texts");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    if (input.number(7) == 0)
        check_foreign_texts(input);
    else
        check_round_trip(input.text());
    return 0;
}
