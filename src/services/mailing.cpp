// mailing.cpp - see mailing.hpp.
#include "services/mailing.hpp"

#include "base/owners.hpp"
#include "data/owned_text.hpp"
#include "data/text.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "services/service_menu.hpp"
#include "services/subscriber.hpp"
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

constexpr int code_size = 40;
constexpr int style_size = 2;

/// Puts what was typed in place of a field's text; when out of memory the field stays as it was.
void keep_answer(char*& field, const heap_text& typed)
{
    if (char* copy = str_dup(typed.get()); copy != nullptr)
        owned_text_replace(field, copy);
}

void subscribe(server_entry& entry)
{
    const heap_text email = subscriber_email_ask(entry);
    if (!email)
        return;
    send_packet(entry.socket_fd, sent_subscription, 0, 0, "%s", email.get());
    keep_answer(entry.UseEMail, email);
}

/// Asks for a style and sends it. False if the user left it out.
bool change_style(const server_entry& entry, const char* email)
{
    const heap_text style{
        prompt_input(style_size, "Style: 0=tovrik 1=ZOBE 2=News", hint_or_cancel, nullptr)};
    if (!style)
        return false;
    const long number = std::strtol(style.get(), nullptr, 10);
    send_packet(entry.socket_fd, sent_report_style, static_cast<std::uint16_t>(number), 0, "%s",
                email);
    return true;
}

void change_subscription(server_entry& entry, char choice)
{
    const heap_text email = subscriber_email_ask(entry);
    if (!email)
        return;
    const heap_text code = subscriber_code_ask(entry, code_size);
    // Kept on purpose: only a style is sent; activating, pausing and leaving record the address and
    // the code and send nothing, since servers know no requests for them.
    // Test: mailing.activating_pausing_and_leaving_record_and_send_nothing.
    if (!code || (choice == choice_style && !change_style(entry, email.get())))
        return;
    keep_answer(entry.UseEMail, email);
    keep_answer(entry.SubCode, code);
}

} // namespace

void mailing_dialog(server_entry& entry)
{
    const char choice = service_menu(mailing_menu, menu_width, menu_height, hint_of_five);
    if (choice == choice_subscribe)
        subscribe(entry);
    else if (choice != '\0')
        change_subscription(entry, choice);
}
