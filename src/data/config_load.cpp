// config_load.cpp - see config_load.hpp.
#include "data/config_load.hpp"

#include "app/app_state.hpp"
#include "base/home.hpp"
#include "data/config_file.hpp"
#include "data/number.hpp"
#include "data/settings_page.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "data/xml_index.hpp"
#include "ui/pane.hpp"
#include "ui/window.hpp"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::string_view server_element = "Server";
constexpr std::size_t key_path_bytes = 64;

/// Where a server's elements are: the path of its block, after which their names are put in turn.
struct server_path {
    char text[2 * xml_name_limit];
    std::size_t block_length; // up to and including the "/" after the block's name
};

server_path make_path(const char* number)
{
    server_path path;
    std::snprintf(path.text, sizeof path.text, "clientconf/Server%s/", number);
    path.block_length = std::strlen(path.text);
    return path;
}

/// The text of one of a server's elements; null if there is none. Borrowed.
const char* find_field(const xml_index& index, server_path& path, std::string_view element)
{
    char* name = path.text + path.block_length;
    name[element.copy(name, sizeof path.text - path.block_length - 1)] = '\0';
    return xml_index_value(index, path.text);
}

/// Copies a value into a field that owns none yet. False when out of memory.
bool copy_value(char*& field, const char* value)
{
    field = str_dup(value);
    return field != nullptr || value == nullptr;
}

/// The texts of a server that are freed with it, and the fields that hold them.
struct text_element {
    const char* name;
    char* server_entry::*field;
};

constexpr text_element text_elements[] = {
    {"ServerName", &server_entry::ServerName},
    {"ServerAlias", &server_entry::ServerAlias},
    {"Password", &server_entry::Password},
    {"Location", &server_entry::Location},
    {"Info", &server_entry::Info},
};

/// Reads the fields that stay with the program until its end: server_entry_free does not know them.
/// False when out of memory.
bool read_mailing_fields(server_entry& server, const xml_index& index, server_path& path)
{
    bool is_complete = copy_value(server.UseEMail, find_field(index, path, "UseEMail"));
    is_complete &= copy_value(server.SubCode, find_field(index, path, "SubCode"));
    return is_complete;
}

/// Reads one server's block. False if a server or a part of it was lost when out of memory.
bool read_server(const xml_index& index, const char* number)
{
    server_path path = make_path(number);
    auto* server = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    if (server == nullptr)
        return false;
    bool is_complete = read_mailing_fields(*server, index, path);
    for (const text_element& element : text_elements)
        is_complete &= copy_value(server->*element.field, find_field(index, path, element.name));
    const char* port = find_field(index, path, "ServerPort");
    server->ServerPort = port != nullptr ? number_clamped(port) : DEFAULT_SERVER_PORT;
    return server_add_or_free(app_state.servers, server) && is_complete;
}

/// Whether an element's name is that of a server's block: "Server" and a digit, then anything.
bool is_server_block(std::string_view name)
{
    return name.starts_with(server_element) && name.size() > server_element.size() &&
           std::isdigit(static_cast<unsigned char>(name[server_element.size()])) != 0;
}

bool read_servers(const xml_node* document, const xml_index& index)
{
    bool is_complete = true;
    for (const xml_node* node = document; node != nullptr && node->name != nullptr;
         node = node->next) {
        if (is_server_block(node->name))
            is_complete &= read_server(index, node->name + server_element.size());
    }
    return is_complete;
}

const char* find_setting(const xml_index& index, const char* key)
{
    char path[key_path_bytes];
    std::snprintf(path, sizeof path, "clientconf/%s", key);
    return xml_index_value(index, path);
}

void read_switches(const xml_index& index)
{
    for (std::size_t row = 0; checkbox_setting_table[row].bit != checkbox_table_end; ++row) {
        if (app_state.checkbox_rows[row] <= 0)
            continue;
        const char* value = find_setting(index, checkbox_setting_table[row].key);
        // Kept on purpose: loading only sets switches; a 0 does not clear one. Test:
        // config_loading.sets_switches_by_any_number_but_0_and_clears_none.
        if (value != nullptr && std::strtol(value, nullptr, 10) != 0)
            app_state.setting_flags |= checkbox_setting_table[row].bit;
    }
}

bool read_folders(const xml_index& index)
{
    bool is_complete = true;
    for (std::size_t row = 0; text_setting_table[row].kind != nullptr; ++row) {
        const char* value = find_setting(index, text_setting_table[row].key);
        if (value == nullptr || app_state.setting_texts == nullptr)
            continue;
        // Kept on purpose: a folder that was set before is not freed. Test:
        // config_loading.does_not_free_the_folder_that_was_set_before.
        is_complete &= copy_value(app_state.setting_texts[text_setting_table[row].index], value);
    }
    return is_complete;
}

/// Takes over what a configuration says. False if anything of it was lost when out of memory.
bool read_document(const char* text)
{
    errno = 0;
    const xml_document document{xml_parse(text)};
    const xml_index index = xml_index_build(document.get());
    bool is_complete = errno != ENOMEM;
    is_complete &= read_servers(document.get(), index);
    read_switches(index);
    is_complete &= read_folders(index);
    settings_values_draw();
    if (app_state.settings_shown != 0)
        window_show(app_state.settings_win);
    return is_complete;
}

/// Reads the open file. False if there is a configuration that could not be taken over completely.
bool read_file(const unique_fd& file, home_visit& visit)
{
    if (is_config_too_large(file)) {
        status_report(colour::error, "Configuration '%s/%s' is too large, ignored", home_name(),
                      config_name);
        return false;
    }
    status_report(colour::success, "Loading private serverlist '%s/%s'", home_name(), config_name);
    const config_content content = config_read(file);
    if (!content.text) {
        // Kept on purpose: out of memory for the text, the program stays in the home folder. Test:
        // config_out_of_memory.stays_in_the_home_folder_if_only_the_file_gets_no_memory.
        visit.stay();
        return false;
    }
    // A part of the settings and servers would pass for all of them.
    return read_document(content.is_whole ? content.text.get() : "") && content.is_whole;
}

} // namespace

void config_load()
{
    home_visit visit;
    const unique_fd file = visit.is_there() ? config_open() : unique_fd{};
    if (file) {
        app_state.is_config_unread = !read_file(file, visit);
        return;
    }
    app_state.is_config_unread = !visit.is_there() || errno != ENOENT;
    status_report(colour::error, "No configuration found in '%s'", home_name());
}
