// text_fields.cpp - see text_fields.hpp.
#include "server/base/text_fields.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

char make_upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool is_single_wildcard(char c)
{
    return c == '_' || c == '?';
}

} // namespace

std::vector<std::string_view> split_fields(std::string_view text, char separator)
{
    std::vector<std::string_view> fields;
    for (auto end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        fields.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    fields.push_back(text);
    return fields;
}

bool is_clean_field(std::string_view field, std::size_t limit)
{
    return field.size() <= limit && std::all_of(field.begin(), field.end(), [](char c) {
               return !is_control(static_cast<unsigned char>(c));
           });
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_control(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

std::string upper_case(std::string_view text)
{
    std::string result{text};
    std::transform(result.begin(), result.end(), result.begin(), make_upper);
    return result;
}

std::string flight_key(std::string_view flight_number)
{
    std::string key = upper_case(flight_number);
    std::size_t number = std::min(min_airline_code_length, key.size());
    while (number < key.size() && !is_digit(key[number])) {
        ++number;
    }
    while (number + 1 < key.size() && key[number] == '0' && is_digit(key[number + 1])) {
        key.erase(number, 1);
    }
    return key;
}

bool wildcard_match(std::string_view pattern, std::string_view text)
{
    // After a mismatch it is enough that the latest "*" takes one character more.
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string_view::npos;
    std::size_t star_end = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            star_end = at;
        } else if (in < pattern.size() && (is_single_wildcard(pattern[in]) ||
                                           make_upper(pattern[in]) == make_upper(text[at]))) {
            ++in;
            ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++star_end;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

} // namespace tovrik
