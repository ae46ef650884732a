// xml_text.cpp - see xml_text.hpp.
#include "server/protocol/xml_text.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"

namespace tovrik
{
namespace
{

// Replacements for characters that readers would take for markup or a template's placeholders.
constexpr char less_than_stand_in = '(';
constexpr char greater_than_stand_in = ')';
constexpr char percent_stand_in = '/';
constexpr char control_stand_in = ' ';

char replace_character(char c)
{
    switch (c) {
    case '<':
        return less_than_stand_in;
    case '>':
        return greater_than_stand_in;
    case '%':
        return percent_stand_in;
    case '\n':
        return c;
    default:
        return is_control(static_cast<unsigned char>(c)) ? control_stand_in : c;
    }
}

} // namespace

std::string value_text(std::string_view text)
{
    std::string value;
    for (const char c : text.substr(0, max_value_bytes)) {
        value += replace_character(c);
    }
    return value;
}

void append_element(std::string& xml, std::string_view name, std::string_view text)
{
    xml.append("<").append(name).append(">").append(value_text(text));
    xml.append("</").append(name).append(">\n");
}

void append_filled_element(std::string& xml, std::string_view name, std::string_view text)
{
    if (!text.empty())
        append_element(xml, name, text);
}

} // namespace tovrik
