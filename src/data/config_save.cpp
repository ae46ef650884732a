// config_save.cpp - see config_save.hpp.
#include "data/config_save.hpp"

#include "app/app_state.hpp"
#include "base/file_replace.hpp"
#include "base/home.hpp"
#include "data/config_file.hpp"
#include "data/xml.hpp"

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <span>
#include <utility>

namespace
{

constexpr const char* server_indent = "        ";

/// Whether the file that is about to be replaced is one that the next start would read, or missing.
bool may_be_replaced()
{
    const unique_fd file = config_open();
    if (!file)
        return true;
    if (is_config_too_large(file))
        return false;
    const config_content former = config_read(file);
    // Kept on purpose: the former configuration is parsed, not used and not freed; the program ends
    // a moment later. Test: config_saving.parses_the_former_file_and_keeps_its_document.
    if (former.text)
        static_cast<void>(xml_parse(former.text.get()));
    return former.text && former.is_whole;
}

const char* text_or_empty(const char* text)
{
    return text != nullptr ? text : "";
}

/// The password that is saved for a server; null for none. Borrowed.
const char* find_saved_password(const server_entry& server)
{
    return is_setting_on(SavePasswords) ? server.Password : nullptr;
}

/// Writes a value with blanks for "<" and ">", which the next start would take for markup.
void write_value(std::FILE* file, const char* value)
{
    while (true) {
        const std::size_t length = std::strcspn(value, "<>");
        std::fwrite(value, 1, length, file);
        if (value[length] == '\0')
            return;
        std::fputc(' ', file);
        value += length + 1;
    }
}

void write_element(std::FILE* file, const char* indent, const char* name, const char* value)
{
    for (const char* part : {indent, "<", name, ">"})
        std::fputs(part, file);
    write_value(file, text_or_empty(value));
    for (const char* part : {"</", name, ">\n"})
        std::fputs(part, file);
}

void write_settings(std::FILE* file)
{
    for (const checkbox_setting& row :
         std::span{checkbox_setting_table}.first<checkbox_setting_count>()) {
        if (row.key[0] != '*')
            std::fprintf(file, "    <%s>%d</%s>\n", row.key,
                         (app_state.setting_flags & row.bit) != 0 ? 1 : 0, row.key);
    }
    for (const text_setting& row : std::span{text_setting_table}.first<setting_text_count>())
        write_element(file, "    ", row.key, folder_setting(row.index));
}

void write_server(std::FILE* file, const server_entry& server, int number)
{
    std::fprintf(file, "    <Server%d>\n", number);
    write_element(file, server_indent, "ServerName", server.ServerName);
    std::fprintf(file, "%s<ServerPort>%d</ServerPort>\n", server_indent, server_port(server));
    write_element(file, server_indent, "ServerAlias", server.ServerAlias);
    write_element(file, server_indent, "Location", server.Location);
    write_element(file, server_indent, "Info", server.Info);
    write_element(file, server_indent, "Password", find_saved_password(server));
    write_element(file, server_indent, "SubCode", server.SubCode);
    write_element(file, server_indent, "UseEMail", server.UseEMail);
    std::fprintf(file, "    </Server%d>\n", number);
}

/// Whether any server's password will be in the file.
bool has_passwords()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        if (find_saved_password(*server_at(app_state.servers, index)) != nullptr)
            return true;
    }
    return false;
}

void write_config(std::FILE* file)
{
    std::fputs("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<clientconf version=\"1.02\">\n",
               file);
    write_settings(file);
    const std::int32_t count = app_state.servers->count;
    for (std::int32_t index = 0; index < count; ++index)
        write_server(file, *server_at(app_state.servers, index), index + 1);
    std::fputs("</clientconf>\n", file);
}

/// The bytes of a configuration file.
struct config_text {
    heap_text bytes; // null when out of memory
    std::size_t length = 0;
};

config_text make_text()
{
    char* bytes = nullptr;
    std::size_t length = 0;
    unique_file stream{open_memstream(&bytes, &length)};
    if (!stream)
        return {};
    write_config(stream.get());
    const bool is_complete = std::ferror(stream.get()) == 0;
    const bool is_closed = std::fclose(stream.release()) == 0;
    heap_text owned{bytes};
    if (!is_complete || !is_closed)
        return {};
    return {std::move(owned), length};
}

} // namespace

void config_save()
{
    home_visit visit;
    if (!visit.is_there())
        return;
    visit.stay();
    if (app_state.is_config_unread || !may_be_replaced())
        return;
    const config_text text = make_text();
    const auto readers = has_passwords() ? file_readers::owner_only : file_readers::as_before;
    if (text.bytes && text.length <= config_max_bytes)
        file_replace(config_name, {text.bytes.get(), text.length}, readers);
}
