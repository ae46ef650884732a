// pager.cpp - see pager.hpp.
#include "services/pager.hpp"

#include "base/owners.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/server_box.hpp"
#include "services/request_text.hpp"
#include "services/service_menu.hpp"
#include "services/subscriber.hpp"
#include "ui/pane.hpp"
#include "ui/prompt.hpp"

#include <cstdlib>
#include <cstring>
#include <ncurses.h>

namespace
{

constexpr menu_entry pager_menu[] = {
    {'1', "Add entry to your pagerlist"},
    {'2', "Remove entry from your pagerlist"},
    {'3', "Request pagerlist from Server"},
};
constexpr int menu_width = 38;
constexpr int menu_height = 5;
constexpr const char* menu_hint = "[ Press 1-3 or ESC to quit ]";
constexpr char choice_add = '1';
constexpr char choice_request = '3';

constexpr int code_size = 15;

// Kept on purpose: Escape leaves a field empty and cancels nothing, whatever the hint says; users
// skip fields with it. Test: pager_change.sends_four_fields_whichever_were_given.
constexpr request_field pager_fields[] = {
    {"Enter Aircraft Registration", 30, hint_or_cancel, ""},
    {"Enter FlightNumber", 30, hint_or_cancel, ""},
    {"Enter Destination Airport (IATA)", 30, hint_or_cancel, ""},
};

/// Asks for the three fields and appends them to the text. How many were given; -1 when out of
/// memory.
int ask_fields(heap_text& text)
{
    int given = 0;
    for (const request_field& field : pager_fields) {
        const std::size_t empty_length = std::strlen(text.get()) + 1; // with the tab
        if (!request_field_ask(text, field))
            return -1;
        given += std::strlen(text.get()) > empty_length ? 1 : 0;
    }
    return given;
}

void change_entry(const server_entry& entry, char choice, std::uint16_t code, heap_text& text)
{
    const int given = ask_fields(text);
    if (given < 0)
        return;
    if (given == 0) {
        beep();
        return status_report(colour::error, "Please enter data in one of the fields");
    }
    const auto kind = choice == choice_add ? sent_pager_add : sent_pager_remove;
    send_packet(entry.socket_fd, kind, code, 0, "%s", text.get());
}

} // namespace

void pager_dialog(server_entry& entry)
{
    const char choice = service_menu(pager_menu, menu_width, menu_height, menu_hint);
    if (choice == '\0')
        return;
    if (choice != choice_request)
        status_report(colour::server_text, "You can use '_', '?' or '*' as wildcard");
    // Kept on purpose: unlike for mailings, what is typed is not kept in the entry; users ask for
    // others, too. Test: pager.the_configured_address_and_code_are_offered_and_not_changed.
    heap_text email = subscriber_email_ask(entry);
    if (!email)
        return;
    const heap_text typed_code = subscriber_code_ask(entry, code_size);
    if (!typed_code)
        return;
    const auto code = static_cast<std::uint16_t>(std::strtol(typed_code.get(), nullptr, 10));
    if (choice != choice_request)
        return change_entry(entry, choice, code, email);
    server_box_expect(entry);
    send_packet(entry.socket_fd, sent_pager_list_request, code, 0, "%s", email.get());
}
