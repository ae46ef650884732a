// transmission.cpp - see transmission.hpp.
#include "net/transmission.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"
#include "net/log_files.hpp"
#include "ui/glyphs.hpp"
#include "ui/layout.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "ui/server_pane.hpp"
#include "ui/window.hpp"

#include <cstring>
#include <string_view>

namespace
{

constexpr const char* head_lines =
    "\nACARS mode: %tovrik/ACARS/ACARSMode%  Aircraft reg: %tovrik/ACARS/AircraftReg% "
    "[%tovrik/Extended/Aircraft%]"
    "\nMessage label: %tovrik/ACARS/MessageLabel% Block id: %tovrik/ACARS/BlockID%  "
    "Message number: %tovrik/ACARS/MessageNumber%"
    "\nFlight number: %tovrik/ACARS/FlightNumber%  "
    "Flight: %tovrik/FlightRouting/From%-%tovrik/FlightRouting/To%"
    "\nOperator: %tovrik/Extended/Operator%";
constexpr const char* content_lines = "\nMessage content: -"
                                      "\n%tovrik/ACARS/Authorized/MessageContent%";
constexpr const char* date_line =
    "\n-------------------------------------------------"
    "[ %tovrik/ACARS/MessageDate/Day%/%tovrik/ACARS/MessageDate/Month%"
    "/%tovrik/ACARS/MessageDate/Year% "
    "%tovrik/ACARS/MessageDate/Hour%:%tovrik/ACARS/MessageDate/Minute% ]-";

constexpr std::string_view statistics_label = "Unique Flights: ";

/// The template for a document, with lines for a message text only if there is one. malloc'ed.
char* make_template(const xml_node* document)
{
    // Kept on purpose: only here the element is looked for by its name alone; logs have always had
    // the two lines wherever a server names a message text. Test:
    // transmission.looks_for_a_message_text_by_name_and_shows_the_one_at_its_path.
    const heap_text content{xml_get(document, "MessageContent", true, true)};
    char* text = str_dup(head_lines);
    if (content)
        text = str_append(text, content_lines);
    return str_append(text, date_line);
}

/// Puts "#" in place of every "%" of a text.
void neutralise_percents(char* text)
{
    for (char* percent = text; (percent = std::strchr(percent, '%')) != nullptr;)
        *percent = '#';
}

/// Replaces one placeholder by its value, wherever in the text it stands. If that made the text too
/// long, every "%" becomes "#" instead. marker, end: the "%" that it begins with and the one that
/// it ends with.
char* fill_placeholder(char* text, char* marker, const char* end, const xml_node* document)
{
    const heap_text placeholder{strndup(marker, static_cast<size_t>(end - marker) + 1)};
    const heap_text path{strndup(marker + 1, static_cast<size_t>(end - marker) - 1)};
    if (!placeholder || !path)
        return text;
    const char* value = xml_get(document, path.get(), false, false);
    if (str_replaced_length(text, placeholder.get(), value) > template_max_bytes) {
        neutralise_percents(marker);
        return text;
    }
    return str_replace(text, placeholder.get(), value);
}

void print_message(colour pair, bool scroll_first, const char* text)
{
    pane_printf(app_state.message_pane, pair, message_column, layout_message_row(), false,
                scroll_first, "%s", text);
}

void refresh_status_pane()
{
    if (app_state.settings_shown == 0)
        window_raise(app_state.status_pane);
}

void print_contacts(const xml_node* document)
{
    const heap_text contacts{str_replace(xml_get(document, "tovrik/Contacts", false, true),
                                         " with this aircraft", nullptr)};
    print_message(colour::secondary, false, contacts ? contacts.get() : "");
}

void show_statistics(const server_entry& entry, const xml_node* document)
{
    const char* flights = xml_get(document, "tovrik/ContactData/DailyFlights", false, false);
    const int row = server_row_on_screen(entry.list_row + 1);
    if (flights == nullptr || row < 0)
        return;
    const int width = static_cast<int>(std::strlen(flights) + statistics_label.size());
    WINDOW* window = popup_open(width, 1, server_pane_width, row, false, colour::bar, false);
    if (window == nullptr)
        return;
    app_state.dialog_win = window;
    glyphs_write_at(window, 0, 0, statistics_label);
    glyphs_write(window, flights);
    mvwchgat(window, 0, 0, -1, A_BOLD, colour_number(colour::statistics), nullptr);
    window_show(window);
}

} // namespace

void present_transmission(server_entry& entry, const xml_node* document)
{
    const heap_text text{fill_template(make_template(document), document)};
    if (!text)
        return;
    log_transmission(entry, text.get());
    const screen_batch together;
    popup_close();
    print_message(colour::text, true, text.get());
    refresh_status_pane();
    if (is_setting_on(ContactInfo))
        print_contacts(document);
    if (is_setting_on(FlightStats) && app_state.settings_shown == 0)
        show_statistics(entry, document);
}

char* fill_template(char* text, const xml_node* document)
{
    for (int replaced = 0; text != nullptr; ++replaced) {
        // Kept on purpose: the search begins at the start again, so a value may name placeholders
        // too; servers may count on that. Test:
        // fill_template.replaces_placeholders_with_the_values_at_their_paths.
        char* marker = std::strchr(text, '%');
        if (marker == nullptr)
            return text;
        if (replaced >= template_max_replacements) {
            neutralise_percents(marker);
            return text;
        }
        const char* end = std::strchr(marker + 1, '%');
        if (end == nullptr)
            *marker = '#';
        else
            text = fill_placeholder(text, marker, end, document);
    }
    return text;
}
