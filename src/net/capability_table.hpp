// capability_table.hpp - what a server may offer, from the message that says so to the user's keys.
#pragma once

#include "data/server_registry.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

/// A field of server_entry that is 1 if a server offers something, else 0.
using server_flag = std::uint8_t server_entry::*;

/// The key of a capability. All null and 0 if it has none.
struct capability_key {
    server_flag permission = nullptr; // must be 1, or the command is refused
    const char* refusal = nullptr;    // said then, with the server's name for "%s"
    const char* label = nullptr;      // on the key line of the information window
    int place = 0;                    // on that line, from 1
};

/// One thing that a server may offer.
struct capability {
    server_flag flag;
    const char* elements[2]; // of the capability message: each sets the flag; null: no second one
    bool is_set_by_any_text = false; // else only by a decimal value other than 0
    const char* word;                // in the information window
    capability_key key{};
};

/// In the order of the words in the information window.
inline constexpr capability capability_table[] = {
    {.flag = &server_entry::crc_check,
     .elements = {"CRCCheck"},
     // Kept on purpose: any text announces CRC checking, even "0"; servers send it like that.
     // Test: capabilities.takes_any_text_for_crc_checking.
     .is_set_by_any_text = true,
     .word = "CRC "},
    {.flag = &server_entry::can_mail,
     .elements = {"Mailing"},
     .word = "MAILING ",
     // Kept on purpose: mailings go by the permission for database updates; servers grant the two
     // together. Test: service_gates.offering_mailings_does_not_open_the_mailings.
     .key = {.permission = &server_entry::can_modify,
             .refusal = "Daily mailings are not supported on %s",
             .label = "^M Mailing | ",
             .place = 2}},
    {.flag = &server_entry::can_modify,
     .elements = {"DBModify", "ModifyFlags"},
     .word = "MODIFY ",
     .key = {.permission = &server_entry::can_modify,
             .refusal = "Database updates are not allowed on %s",
             .label = "^A Add entries | ",
             .place = 1}},
    {.flag = &server_entry::can_page,
     .elements = {"Pager"},
     .word = "PAGER ",
     .key = {.permission = &server_entry::can_page,
             .refusal = "Pagerlists are not supported on %s",
             .label = "^P Pager | ",
             .place = 4}},
    {.flag = &server_entry::can_report,
     .elements = {"Reports"},
     .word = "REPORTS ",
     .key = {.permission = &server_entry::can_report,
             .refusal = "Reports are not supported on %s",
             .label = "^O Reports | ",
             .place = 3}},
};

/// The row of a flag. One that has none does not compile.
consteval const capability& capability_of(server_flag flag)
{
    return *std::ranges::find(capability_table, flag, &capability::flag);
}
