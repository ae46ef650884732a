// capabilities.cpp - see capabilities.hpp.
#include "net/capabilities.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "net/connection.hpp"
#include "net/md5.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"

#include <cstdlib>

namespace
{

constexpr int password_room = 40;

heap_text element_text(const xml_node* document, const char* name)
{
    return heap_text{xml_get(document, name, true, true)};
}

/// 1 when the element is there with a decimal value other than 0, else 0.
std::uint8_t element_flag(const xml_node* document, const char* name)
{
    const heap_text text = element_text(document, name);
    return text && std::strtol(text.get(), nullptr, 10) != 0 ? 1 : 0;
}

void identity_record(server_entry& entry, const xml_node* document)
{
    server_identity_clear(entry);
    entry.server_version = element_text(document, "Version").release();
    entry.server_uuid = element_text(document, "ServerUUID").release();
    if (entry.server_uuid != nullptr)
        status_report(colour::text, "ServerID: %s", entry.server_uuid);
}

void flags_record(server_entry& entry, const xml_node* document)
{
    // Unlike the others, this one is set by any text at all, a "0" included.
    const heap_text crc_check = element_text(document, "CRCCheck");
    entry.crc_check = crc_check ? 1 : 0;
    entry.can_mail = element_flag(document, "Mailing");
    entry.can_modify = element_flag(document, "DBModify") | element_flag(document, "ModifyFlags");
    entry.can_report = element_flag(document, "Reports");
    entry.can_page = element_flag(document, "Pager");
}

void password_send(const server_entry& entry)
{
    send_packet(entry.socket_fd, packet_password, 0, 0, "%s", entry.Password);
}

void authenticate(server_entry& entry)
{
    status_report(colour::secondary, "Password needed for this Server");
    if (!is_setting_on(SavePasswords) || entry.Password == nullptr)
        return ask_password(entry);
    status_report(colour::secondary, "Sending saved password from your configuration");
    password_send(entry);
}

} // namespace

void handle_capabilities(server_entry& entry, const char* text)
{
    const xml_document document{xml_parse(text)};
    identity_record(entry, document.get());
    flags_record(entry, document.get());
    if (element_flag(document.get(), "NeedAuth") != 0)
        authenticate(entry);
    check_duplicate_connection(entry);
}

void ask_password(server_entry& entry)
{
    const heap_text typed{
        prompt_input(password_room, "Password required", hint_or_cancel, nullptr)};
    if (!typed)
        return;
    char digest[33];
    md5_hex(typed.get(), digest);
    char* password = str_dup(digest);
    if (password == nullptr)
        return;
    std::free(entry.Password);
    entry.Password = password;
    password_send(entry);
}
