// config_save.cpp - see config_save.hpp.
#include "data/config_save.hpp"

#include "app/app_state.hpp"
#include "base/file_replace.hpp"
#include "base/home.hpp"
#include "data/config_file.hpp"
#include "data/xml.hpp"

#include <cstdlib>
#include <span>
#include <utility>

namespace
{

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

void write_settings(std::FILE* file)
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

void write_server(std::FILE* file, const server_entry& server, int number)
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
    if (text.bytes && text.length <= config_max_bytes)
        file_replace(config_name, {text.bytes.get(), text.length});
}
