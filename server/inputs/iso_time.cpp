// iso_time.cpp - see iso_time.hpp.
#include "server/inputs/iso_time.hpp"

#include "server/base/text_fields.hpp"

#include <optional>

namespace tovrik
{
namespace
{

constexpr std::string_view time_form = "dddd-dd-ddTdd:dd:dd";
constexpr std::string_view difference_form = "dddd";

/// Whether a text has a digit wherever the form has a "d", and the form's character elsewhere.
bool matches_form(std::string_view text, std::string_view form)
{
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] == 'd' ? !is_digit(text[i]) : text[i] != form[i])
            return false;
    }
    return true;
}

int read_number(std::string_view digits)
{
    int number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

/// The difference from UTC in seconds; nothing if the text is none.
std::optional<int> read_difference(std::string_view text)
{
    if (text == "Z")
        return 0;
    if (text.empty() || (text[0] != '+' && text[0] != '-') ||
        !matches_form(text.substr(1), difference_form))
        return {};
    const int hours = read_number(text.substr(1, 2));
    const int minutes = read_number(text.substr(3, 2));
    if (hours > 23 || minutes > 59)
        return {};
    const int seconds = (hours * 60 + minutes) * 60;
    return text[0] == '-' ? -seconds : seconds;
}

} // namespace

std::time_t iso_time(std::string_view text)
{
    if (text.size() < time_form.size() ||
        !matches_form(text.substr(0, time_form.size()), time_form))
        return 0;
    const auto difference = read_difference(text.substr(time_form.size()));
    std::tm utc{};
    utc.tm_year = read_number(text.substr(0, 4)) - 1900;
    utc.tm_mon = read_number(text.substr(5, 2)) - 1;
    utc.tm_mday = read_number(text.substr(8, 2));
    utc.tm_hour = read_number(text.substr(11, 2));
    utc.tm_min = read_number(text.substr(14, 2));
    utc.tm_sec = read_number(text.substr(17, 2));
    std::tm normal = utc;
    // The 30th of February becomes another day, and an hour 24 the next day.
    const std::time_t seconds = timegm(&normal);
    const bool exists = normal.tm_mon == utc.tm_mon && normal.tm_mday == utc.tm_mday &&
                        normal.tm_hour == utc.tm_hour && normal.tm_min == utc.tm_min &&
                        normal.tm_sec == utc.tm_sec;
    if (!difference || !exists || seconds <= *difference)
        return 0;
    return seconds - *difference;
}

} // namespace tovrik
