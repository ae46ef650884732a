// password.cpp - see password.hpp.
#include "net/password.hpp"

#include "app/app_state.hpp"
#include "base/md5.hpp"
#include "base/owners.hpp"
#include "data/owned_text.hpp"
#include "data/text.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/server_box.hpp"
#include "ui/pane.hpp"

namespace
{

constexpr int password_size = 40;

void send_password(const server_entry& entry)
{
    send_packet(entry.socket_fd, sent_password, 0, 0, "%s", entry.Password);
}

} // namespace

bool password_is_asked_for(const server_entry& entry)
{
    return !is_setting_on(SavePasswords) || entry.Password == nullptr;
}

void password_answer(server_entry& entry)
{
    status_report(colour::secondary, "Password needed for this Server");
    if (password_is_asked_for(entry))
        return ask_password(entry);
    status_report(colour::secondary, "Sending saved password from your configuration");
    send_password(entry);
}

void ask_password(server_entry& entry)
{
    const heap_text typed{server_box_prompt(entry, password_size, "Password required", nullptr)};
    if (!typed)
        return;
    char digest[33];
    md5_hex(typed.get(), digest);
    char* password = str_dup(digest);
    if (password == nullptr)
        return;
    owned_text_replace(entry.Password, password);
    send_password(entry);
}
