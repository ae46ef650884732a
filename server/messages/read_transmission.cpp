// read_transmission.cpp - see read_transmission.hpp.
#include "server/messages/read_transmission.hpp"

#include "data/xml.hpp"

#include <charconv>
#include <string_view>

namespace tovrik
{
namespace
{

struct text_place {
    const char* path;
    std::string transmission::*text;
};

constexpr text_place text_places[] = {
    {"tovrik/ACARS/ACARSMode", &transmission::mode},
    {"tovrik/ACARS/AircraftReg", &transmission::registration},
    {"tovrik/ACARS/MessageLabel", &transmission::label},
    {"tovrik/ACARS/BlockID", &transmission::block_id},
    {"tovrik/ACARS/MessageNumber", &transmission::message_number},
    {"tovrik/ACARS/FlightNumber", &transmission::flight_number},
    {"tovrik/ACARS/Authorized/MessageContent", &transmission::content},
    {"tovrik/FlightRouting/From", &transmission::from},
    {"tovrik/FlightRouting/To", &transmission::to},
    {"tovrik/Extended/Aircraft", &transmission::aircraft},
    {"tovrik/Extended/Operator", &transmission::operator_name},
};

struct date_place {
    const char* path;
    int std::tm::*number;
    int offset; ///< from the written number to that of std::tm
    int min;
    int max;
};

constexpr date_place date_places[] = {
    {"tovrik/ACARS/MessageDate/Day", &std::tm::tm_mday, 0, 1, 31},
    {"tovrik/ACARS/MessageDate/Month", &std::tm::tm_mon, -1, 1, 12},
    {"tovrik/ACARS/MessageDate/Year", &std::tm::tm_year, -1900, 1970, 9999},
    {"tovrik/ACARS/MessageDate/Hour", &std::tm::tm_hour, 0, 0, 23},
    {"tovrik/ACARS/MessageDate/Minute", &std::tm::tm_min, 0, 0, 59},
};

std::string_view read_text(const xml_node* document, const char* path)
{
    const char* const text = xml_get(document, path, false, false);
    return text != nullptr ? text : std::string_view{};
}

std::time_t read_time(const xml_node* document)
{
    std::tm utc{};
    for (const auto& place : date_places) {
        const std::string_view text = read_text(document, place.path);
        int number = place.min - 1;
        std::from_chars(text.data(), text.data() + text.size(), number);
        if (number < place.min || number > place.max)
            return 0;
        utc.*place.number = number + place.offset;
    }
    return timegm(&utc);
}

} // namespace

transmission read_transmission(const std::string& xml)
{
    const xml_document document{xml_parse(xml.c_str())};
    transmission message;
    for (const auto& place : text_places) {
        message.*place.text = read_text(document.get(), place.path);
    }
    message.time = read_time(document.get());
    return message;
}

} // namespace tovrik
