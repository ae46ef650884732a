// config_file.cpp - see config_file.hpp.
#include "data/config_file.hpp"

#include "app/app_state.hpp"
#include "base/file_replace.hpp"
#include "base/home.hpp"
#include "base/retry.hpp"
#include "data/settings_page.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "data/xml_index.hpp"
#include "ui/pane.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace
{

constexpr std::string_view server_element = "Server";
constexpr std::size_t key_path_bytes = 64;

/// There was a configuration at the start that could not be read, or of which something was lost
/// for want of memory. It is not to be replaced by what the program knows without it.
bool is_unread = false;

unique_fd config_open()
{
    // A fifo under this name must not make the program wait for a writer.
    return unique_fd{
        uninterrupted([] { return open(config_name, O_RDONLY | O_NONBLOCK | O_CLOEXEC); })};
}

/// The size of a file; -1 when the system does not tell.
std::int64_t size_of(const unique_fd& file)
{
    struct stat status = {};
    return fstat(file.get(), &status) == 0 ? std::int64_t{status.st_size} : -1;
}

/// A file's content up to the bound, terminated; null when memory is short. is_whole: whether that
/// is all of it, which it is not either while another program is writing the file anew.
heap_text content_read(const unique_fd& file, bool& is_whole)
{
    const std::int64_t size = size_of(file);
    const auto room = static_cast<std::size_t>(std::clamp<std::int64_t>(size, 0, config_max_bytes));
    heap_text text{static_cast<char*>(std::calloc(room + 1, 1))};
    std::size_t length = 0;
    ssize_t count = 1;
    while (text && length < room && count > 0) {
        count = uninterrupted([&] { return read(file.get(), text.get() + length, room - length); });
        length += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    is_whole = std::cmp_equal(length, size);
    return text;
}

std::int32_t number_of(const char* text)
{
    const long number = std::strtol(text, nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long>(number,
                                                      std::numeric_limits<std::int32_t>::min(),
                                                      std::numeric_limits<std::int32_t>::max()));
}

/// Where a server's elements are: the path of its block, behind which their names are put in turns.
struct server_path {
    char text[2 * xml_name_limit];
    std::size_t block_length; // the "/" behind the block's name included
};

server_path path_of_block(const char* number)
{
    server_path path;
    std::snprintf(path.text, sizeof path.text, "clientconf/Server%s/", number);
    path.block_length = std::strlen(path.text);
    return path;
}

/// The text of one of a server's elements; null when there is none. Borrowed.
const char* field_value(const xml_index& index, server_path& path, std::string_view element)
{
    char* name = path.text + path.block_length;
    name[element.copy(name, sizeof path.text - path.block_length - 1)] = '\0';
    return xml_index_value(index, path.text);
}

char* text_copy(const char* value)
{
    char* copy = str_dup(value);
    is_unread = is_unread || (value != nullptr && copy == nullptr);
    return copy;
}

char* field_copy(const xml_index& index, server_path& path, std::string_view element)
{
    return text_copy(field_value(index, path, element));
}

std::int32_t port_of(const xml_index& index, server_path& path)
{
    const char* text = field_value(index, path, "ServerPort");
    return text != nullptr ? number_of(text) : DEFAULT_SERVER_PORT;
}

/// The fields that stay with the program until its end: server_entry_free does not know them.
void mailing_fields_read(server_entry& server, const xml_index& index, server_path& path)
{
    server.UseEMail = field_copy(index, path, "UseEMail");
    server.SubCode = field_copy(index, path, "SubCode");
}

void server_read(const xml_index& index, const char* number)
{
    server_path path = path_of_block(number);
    auto* server = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    if (server == nullptr) {
        is_unread = true;
        return;
    }
    server->ServerName = field_copy(index, path, "ServerName");
    server->ServerPort = port_of(index, path);
    server->ServerAlias = field_copy(index, path, "ServerAlias");
    server->Password = field_copy(index, path, "Password");
    mailing_fields_read(*server, index, path);
    server->Location = field_copy(index, path, "Location");
    server->Info = field_copy(index, path, "Info");
    is_unread = !server_add_or_free(app_state.servers, server) || is_unread;
}

void servers_read(const xml_node* document, const xml_index& index)
{
    for (const xml_node* node = document; node != nullptr && node->name != nullptr;
         node = node->next) {
        const std::string_view name = node->name;
        const bool is_block = name.starts_with(server_element) &&
                              name.size() > server_element.size() &&
                              std::isdigit(static_cast<unsigned char>(name[server_element.size()]));
        if (is_block)
            server_read(index, node->name + server_element.size());
    }
}

const char* setting_value(const xml_index& index, const char* key)
{
    char path[key_path_bytes];
    std::snprintf(path, sizeof path, "clientconf/%s", key);
    return xml_index_value(index, path);
}

void switches_read(const xml_index& index)
{
    for (std::size_t row = 0; checkbox_setting_table[row].bit != checkbox_table_end; ++row) {
        if (app_state.checkbox_rows[row] <= 0)
            continue;
        const char* value = setting_value(index, checkbox_setting_table[row].key);
        if (value != nullptr && std::strtol(value, nullptr, 10) != 0)
            app_state.setting_flags |= checkbox_setting_table[row].bit;
    }
}

void folders_read(const xml_index& index)
{
    for (std::size_t row = 0; text_setting_table[row].kind != nullptr; ++row) {
        const char* value = setting_value(index, text_setting_table[row].key);
        if (value == nullptr || app_state.setting_texts == nullptr)
            continue;
        app_state.setting_texts[text_setting_table[row].index] = text_copy(value);
    }
}

void document_read(const char* text)
{
    errno = 0;
    const xml_document document{xml_parse(text)};
    const xml_index index = xml_index_build(document.get());
    is_unread = is_unread || errno == ENOMEM;
    servers_read(document.get(), index);
    switches_read(index);
    folders_read(index);
    settings_values_draw();
    if (app_state.settings_shown != 0)
        window_show(app_state.settings_win);
}

/// Reads the configuration that is about to be replaced. Its document stays in memory until the
/// program's end, a moment later.
bool former_config_read()
{
    const unique_fd file = config_open();
    if (!file)
        return true;
    bool is_whole = true;
    const heap_text text = content_read(file, is_whole);
    if (text)
        static_cast<void>(xml_parse(text.get()));
    return text && is_whole;
}

bool is_too_large()
{
    const unique_fd file = config_open();
    return file && std::cmp_greater(size_of(file), config_max_bytes);
}

const char* text_or_empty(const char* text)
{
    return text != nullptr ? text : "";
}

void settings_write(std::FILE* file)
{
    for (const checkbox_setting& row :
         std::span{checkbox_setting_table}.first<checkbox_setting_count>()) {
        if (row.key[0] != '*')
            std::fprintf(file, "    <%s>%d</%s>\n", row.key,
                         (app_state.setting_flags & row.bit) != 0 ? 1 : 0, row.key);
    }
    for (const text_setting& row : std::span{text_setting_table}.first<setting_text_count>())
        std::fprintf(file, "    <%s>%s</%s>\n", row.key, folder_setting(row.index), row.key);
}

void server_write(std::FILE* file, const server_entry& server, int number)
{
    const char* password = is_setting_on(SavePasswords) ? server.Password : nullptr;
    std::fprintf(file,
                 "    <Server%d>\n"
                 "        <ServerName>%s</ServerName>\n"
                 "        <ServerPort>%d</ServerPort>\n"
                 "        <ServerAlias>%s</ServerAlias>\n"
                 "        <Location>%s</Location>\n"
                 "        <Info>%s</Info>\n"
                 "        <Password>%s</Password>\n"
                 "        <SubCode>%s</SubCode>\n"
                 "        <UseEMail>%s</UseEMail>\n"
                 "    </Server%d>\n",
                 number, server.ServerName, server_port(server), text_or_empty(server.ServerAlias),
                 text_or_empty(server.Location), text_or_empty(server.Info),
                 text_or_empty(password), text_or_empty(server.SubCode),
                 text_or_empty(server.UseEMail), number);
}

void config_write(std::FILE* file)
{
    std::fputs("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<clientconf version=\"1.02\">\n",
               file);
    settings_write(file);
    const std::int32_t count = app_state.servers->count;
    for (std::int32_t index = 0; index < count; ++index)
        server_write(file, *server_at(app_state.servers, index), index + 1);
    std::fputs("</clientconf>\n", file);
}

/// What a configuration file holds.
struct config_text {
    heap_text bytes; // null when memory is short
    std::size_t length = 0;
};

config_text config_text_make()
{
    char* bytes = nullptr;
    std::size_t length = 0;
    unique_file stream{open_memstream(&bytes, &length)};
    if (!stream)
        return {};
    config_write(stream.get());
    const bool is_complete = std::ferror(stream.get()) == 0;
    const bool is_closed = std::fclose(stream.release()) == 0;
    heap_text owned{bytes};
    if (!is_complete || !is_closed)
        return {};
    return {std::move(owned), length};
}

} // namespace

void config_load()
{
    home_visit visit;
    const unique_fd file = visit.is_there() ? config_open() : unique_fd{};
    is_unread = !visit.is_there() || (!file && errno != ENOENT);
    if (!file) {
        status_report(colour::error, "No configuration found in '%s'", home_name());
        return;
    }
    if (std::cmp_greater(size_of(file), config_max_bytes)) {
        is_unread = true;
        status_report(colour::error, "Configuration '%s/%s' is too large, ignored", home_name(),
                      config_name);
        return;
    }
    status_report(colour::success, "Loading private serverlist '%s/%s'", home_name(), config_name);
    bool is_whole = true;
    const heap_text text = content_read(file, is_whole);
    is_unread = !text || !is_whole;
    if (!text)
        return visit.stay();
    // A part of the settings and servers would pass for all of them.
    document_read(is_whole ? text.get() : "");
}

void config_save()
{
    home_visit visit;
    if (!visit.is_there())
        return;
    visit.stay();
    if (is_unread || is_too_large() || !former_config_read())
        return;
    const config_text text = config_text_make();
    if (text.bytes && text.length <= config_max_bytes)
        file_replace(config_name, {text.bytes.get(), text.length});
}
