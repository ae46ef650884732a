// transmission.cpp - see transmission.hpp.
#include "net/transmission.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "data/template.hpp"
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

constexpr std::string_view statistics_label = "Unique Flights: ";

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
    const heap_text text{fill_template(template_make(document), document)};
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
