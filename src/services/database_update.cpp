// database_update.cpp - see database_update.hpp.
#include "services/database_update.hpp"

#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "services/request_text.hpp"
#include "services/service_menu.hpp"
#include "ui/prompt.hpp"

namespace
{

constexpr menu_entry update_menu[] = {
    {'1', "Add new Airline"}, {'2', "Add new Flightnumber"}, {'3', "Add new Aircraft"},
    {'4', "Add new Airport"}, {'5', "Add new ACARS mode"},
};
constexpr int menu_width = 35;
constexpr int menu_height = 7;

constexpr const char* hint_or_none = "RET=OK - ESC=NONE";
constexpr const char* hint_or_unknown = "RET=OK - ESC=UNKNOWN";
constexpr const char* hint_or_every_day = "RET=OK - ESC=EVERY DAY";

constexpr request_field airline_fields[] = {
    {"Enter IATA or ICAO Code", 30, hint_or_cancel, nullptr},
    {"Enter Airline", 30, hint_or_cancel, nullptr},
};
constexpr request_field flight_fields[] = {
    {"Enter Flightnumber", 25, hint_or_cancel, nullptr},
    {"Routing (FROM-VIA-VIA-TO)", 40, hint_or_cancel, nullptr},
    {"Enter Remarks", 40, hint_or_none, ""},
    {"Days of flight -X----X", 30, hint_or_every_day, "XXXXXXX"},
};
constexpr request_field aircraft_fields[] = {
    {"Enter Registration", 25, hint_or_cancel, nullptr},
    {"Manufacturer (Airbus, Boeing)", 40, hint_or_cancel, nullptr},
    {"Aircraft (A320, B737)", 40, hint_or_cancel, nullptr},
    {"Aircraft (A320-214, B737-5K5)", 40, hint_or_cancel, nullptr},
    {"Construction Number", 30, hint_or_unknown, ""},
    {"Operator IATA Code", 30, hint_or_unknown, ""},
    {"Operator ICAO Code", 30, hint_or_unknown, ""},
    {"Translated Reg. (current)", 30, hint_or_none, ""},
    {"Remarks", 30, hint_or_none, ""},
};
constexpr request_field airport_fields[] = {
    {"Enter IATA or ICAO Code", 30, hint_or_cancel, nullptr},
    {"Airport (City, Country)", 50, hint_or_cancel, nullptr},
};
constexpr request_field mode_fields[] = {
    {"Label or LabelIATA Code", 5, hint_or_cancel, nullptr},
    {"Label Description", 50, hint_or_cancel, nullptr},
};

struct update_request {
    sent_packet_kind kind;
    std::span<const request_field> fields;
};

/// In the menu's order.
constexpr update_request update_requests[] = {
    {sent_add_airline, airline_fields},   {sent_add_flight, flight_fields},
    {sent_add_aircraft, aircraft_fields}, {sent_add_airport, airport_fields},
    {sent_add_mode, mode_fields},
};

} // namespace

void add_entries_dialog(server_entry& entry)
{
    const char choice = service_menu(update_menu, menu_width, menu_height, hint_of_five);
    if (choice == '\0')
        return;
    const update_request& request = update_requests[choice - '1'];
    heap_text text;
    for (const request_field& field : request.fields) {
        if (!request_field_ask(text, field))
            return;
    }
    send_packet(entry.socket_fd, request.kind, 0, 0, "%s", text.get());
}
