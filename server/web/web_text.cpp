// web_text.cpp - see web_text.hpp.
#include "server/web/web_text.hpp"

#include "server/base/text_fields.hpp"
#include "server/base/utf8_text.hpp"

#include <algorithm>
#include <array>

namespace tovrik
{
namespace
{

struct replacement {
    char character;
    const char* text;
};

constexpr replacement html_replacements[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"},
};

constexpr replacement label_replacements[] = {{'\\', "\\\\"}, {'"', "\\\""}};

constexpr replacement field_replacements[] = {{'<', " "}, {'>', " "}};

template <std::size_t count>
std::string replace_characters(std::string_view text, const replacement (&replacements)[count])
{
    std::string replaced;
    for (const char c : text) {
        const auto* const found = std::ranges::find(replacements, c, &replacement::character);
        if (found != std::end(replacements)) {
            replaced += found->text;
        } else {
            replaced += is_control(static_cast<unsigned char>(c)) ? ' ' : c;
        }
    }
    return replaced;
}

struct time_unit {
    std::time_t seconds;
    const char* name;
};

constexpr time_unit time_units[] = {
    {86400, " day"}, {3600, " hour"}, {60, " minute"}, {1, " second"}};

std::string count_of_unit(std::time_t count, const char* unit)
{
    return web_number(static_cast<std::uint64_t>(count)) + unit + (count == 1 ? "" : "s");
}

} // namespace

std::string web_html(std::string_view latin1)
{
    return utf8_of_latin1(replace_characters(latin1, html_replacements));
}

std::string web_label(std::string_view latin1)
{
    return utf8_of_latin1(replace_characters(latin1, label_replacements));
}

std::string web_field(std::string_view latin1)
{
    return replace_characters(latin1, field_replacements);
}

std::string web_number(std::uint64_t number)
{
    std::string digits = std::to_string(number);
    constexpr std::size_t group = 3;
    for (std::size_t at = digits.size(); at > group;) {
        at -= group;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string web_short_number(std::uint64_t number)
{
    constexpr std::uint64_t thousand = 1000;
    std::uint64_t shown = number;
    const char* const letters[] = {"", "k", "M", "G", "T", "P", "E"};
    const char* const* letter = letters;
    for (std::uint64_t limit = 100 * thousand; shown >= limit; limit = 10 * thousand) {
        shown /= thousand;
        ++letter;
    }
    return web_number(shown) + *letter;
}

std::string web_duration(std::time_t seconds, int units)
{
    std::string text;
    std::time_t rest = std::max<std::time_t>(seconds, 0);
    for (const auto& [unit_seconds, name] : time_units) {
        const std::time_t count = rest / unit_seconds;
        if (count == 0 && text.empty() && unit_seconds > 1)
            continue;
        if (count > 0 || text.empty())
            text += (text.empty() ? "" : " ") + count_of_unit(count, name);
        rest %= unit_seconds;
        if (--units == 0)
            break;
    }
    return text;
}

std::string web_utc(std::time_t time, const char* format)
{
    constexpr int years_before_1900 = 1900;
    constexpr int last_year = 9999;
    std::tm parts{};
    std::array<char, 64> text{};
    if (gmtime_r(&time, &parts) == nullptr || parts.tm_year < -years_before_1900 ||
        parts.tm_year > last_year - years_before_1900)
        return "?";
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

} // namespace tovrik
