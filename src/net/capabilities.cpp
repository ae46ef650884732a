// capabilities.cpp - see capabilities.hpp.
#include "net/capabilities.hpp"

#include "base/owners.hpp"
#include "data/owned_text.hpp"
#include "data/xml.hpp"
#include "net/capability_table.hpp"
#include "net/connection_end.hpp"
#include "net/password.hpp"
#include "ui/pane.hpp"

#include <cstdlib>

namespace
{

heap_text find_element(const xml_node* document, const char* name)
{
    return heap_text{xml_get(document, name, true, true)};
}

/// Whether an element says yes: by any text at all, or else by a decimal number other than 0.
bool is_set(const xml_node* document, const char* name, bool by_any_text)
{
    const heap_text text = find_element(document, name);
    return text && (by_any_text || std::strtol(text.get(), nullptr, 10) != 0);
}

bool is_offered(const xml_node* document, const capability& offer)
{
    const auto [first, second] = offer.elements;
    return is_set(document, first, offer.is_set_by_any_text) ||
           (second != nullptr && is_set(document, second, offer.is_set_by_any_text));
}

bool is_password_demanded(const xml_node* document)
{
    return is_set(document, "NeedAuth", false);
}

void record_identity(server_entry& entry, const xml_node* document)
{
    owned_text_replace(entry.server_version, find_element(document, "Version").release());
    owned_text_replace(entry.server_uuid, find_element(document, "ServerUUID").release());
    if (entry.server_uuid != nullptr)
        status_report(colour::text, "ServerID: %s", entry.server_uuid);
}

void record_offers(server_entry& entry, const xml_node* document)
{
    for (const capability& offer : capability_table)
        entry.*offer.flag = is_offered(document, offer) ? 1 : 0;
}

} // namespace

bool capabilities_open_box(const server_entry& entry, const char* text)
{
    return password_is_asked_for(entry) &&
           is_password_demanded(xml_document{xml_parse(text)}.get());
}

void handle_capabilities(server_entry& entry, const char* text)
{
    const xml_document document{xml_parse(text)};
    record_identity(entry, document.get());
    record_offers(entry, document.get());
    if (is_password_demanded(document.get()))
        password_answer(entry);
    // Kept on purpose: this comes last, so a password is asked for and sent first; servers expect
    // it before anything else. Test: duplicate.is_found_after_the_password_was_asked_for.
    check_duplicate_connection(entry);
}
