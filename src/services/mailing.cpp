// mailing.cpp - see mailing.hpp.
#include "services/mailing.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "services/service_menu.hpp"
#include "ui/prompt.hpp"

#include <cstdlib>

namespace
{

constexpr menu_entry mailing_menu[] = {
    {'1', "Subscribe for daily reports"}, {'2', "Activate Subscription"},
    {'3', "Pause Subscription"},          {'4', "Unsubscribe"},
    {'5', "Change Report Type"},
};
constexpr int menu_width = 35;
constexpr int menu_height = 7;
constexpr char choice_subscribe = '1';
constexpr char choice_style = '5';

constexpr int email_room = 50;
constexpr int code_room = 40;
constexpr int style_room = 2;

/// Replaces a field that stays with the program until its end: server_entry_free does not know it.
/// It is kept as it was when memory is short.
void mailing_field_keep(char*& field, const heap_text& typed)
{
    char* copy = str_dup(typed.get());
    if (copy == nullptr)
        return;
    std::free(field);
    field = copy;
}

heap_text email_ask(const server_entry& entry)
{
    return heap_text{
        prompt_input(email_room, "Enter your email address", hint_or_cancel, entry.UseEMail)};
}

void subscribe(server_entry& entry)
{
    const heap_text email = email_ask(entry);
    if (!email)
        return;
    send_packet(entry.socket_fd, packet_subscribe, 0, 0, "%s", email.get());
    mailing_field_keep(entry.UseEMail, email);
}

/// Asks for a style and sends it. False when the user left it out.
bool style_change(const server_entry& entry, const char* email)
{
    const heap_text style{
        prompt_input(style_room, "Style: 0=tovrik 1=ZOBE 2=News", hint_or_cancel, nullptr)};
    if (!style)
        return false;
    const long number = std::strtol(style.get(), nullptr, 10);
    send_packet(entry.socket_fd, packet_report_style, static_cast<std::uint16_t>(number), 0, "%s",
                email);
    return true;
}

/// Servers are told of a style only; activating, pausing and leaving just record the address and
/// the code here.
void subscription_change(server_entry& entry, char choice)
{
    const heap_text email = email_ask(entry);
    if (!email)
        return;
    const heap_text code{
        prompt_input(code_room, "Your subscription code", hint_or_cancel, entry.SubCode)};
    if (!code || (choice == choice_style && !style_change(entry, email.get())))
        return;
    mailing_field_keep(entry.UseEMail, email);
    mailing_field_keep(entry.SubCode, code);
}

} // namespace

void mailing_dialog(server_entry& entry)
{
    const char choice = service_menu(mailing_menu, menu_width, menu_height, hint_of_five);
    if (choice == choice_subscribe)
        subscribe(entry);
    else if (choice != '\0')
        subscription_change(entry, choice);
}
