// transmission.cpp - see transmission.hpp.
#include "server/messages/transmission.hpp"

#include "server/protocol/xml_text.hpp"

#include <cstdio>

namespace tovrik
{
namespace
{

std::string format_digits(int number, int width)
{
    char text[16];
    std::snprintf(text, sizeof text, "%0*d", width, number);
    return text;
}

void append_date(std::string& xml, std::time_t time)
{
    std::tm utc{};
    if (gmtime_r(&time, &utc) == nullptr)
        return;
    xml += "<MessageDate>\n";
    append_element(xml, "Day", format_digits(utc.tm_mday, 2));
    append_element(xml, "Month", format_digits(utc.tm_mon + 1, 2));
    append_element(xml, "Year", format_digits(utc.tm_year + 1900, 4));
    append_element(xml, "Hour", format_digits(utc.tm_hour, 2));
    append_element(xml, "Minute", format_digits(utc.tm_min, 2));
    xml += "</MessageDate>\n";
}

void append_acars(std::string& xml, const transmission& message)
{
    xml += "<ACARS>\n";
    append_filled_element(xml, "ACARSMode", message.mode);
    append_filled_element(xml, "AircraftReg", message.registration);
    append_filled_element(xml, "MessageLabel", message.label);
    append_filled_element(xml, "BlockID", message.block_id);
    append_filled_element(xml, "MessageNumber", message.message_number);
    append_filled_element(xml, "FlightNumber", message.flight_number);
    append_date(xml, message.time);
    if (!message.content.empty()) {
        xml += "<Authorized>\n";
        append_element(xml, "MessageContent", message.content);
        xml += "</Authorized>\n";
    }
    xml += "</ACARS>\n";
}

std::string format_contacts(std::uint32_t contacts)
{
    return std::to_string(contacts) + (contacts == 1 ? " contact" : " contacts") +
           " with this aircraft";
}

} // namespace

std::string transmission_xml(const transmission& message)
{
    std::string xml = xml_declaration;
    xml += "<tovrik>\n";
    append_acars(xml, message);
    xml += "<FlightRouting>\n";
    append_filled_element(xml, "From", message.from);
    append_filled_element(xml, "To", message.to);
    xml += "</FlightRouting>\n<Extended>\n";
    append_filled_element(xml, "Aircraft", message.aircraft);
    append_filled_element(xml, "Operator", message.operator_name);
    xml += "</Extended>\n";
    if (message.contacts > 0)
        append_element(xml, "Contacts", format_contacts(message.contacts));
    if (message.daily_flights > 0) {
        xml += "<ContactData>\n";
        append_element(xml, "DailyFlights", std::to_string(message.daily_flights));
        xml += "</ContactData>\n";
    }
    return xml += "</tovrik>\n";
}

bool is_uplink(std::string_view xml)
{
    constexpr std::string_view tag = "<BlockID>";
    const auto found = xml.find(tag);
    if (found == std::string_view::npos || found + tag.size() >= xml.size())
        return false;
    const char block = xml[found + tag.size()];
    return (block >= 'A' && block <= 'Z') || (block >= 'a' && block <= 'z');
}

} // namespace tovrik
