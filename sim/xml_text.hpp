// xml_text.hpp - writing documents that the clients' small reader understands.
//
// That reader finds nothing without an XML declaration, takes text verbatim (no entities), keeps
// 511 bytes of it, and hands percent signs on to templates that give them a meaning of their own.
#pragma once

#include <string>
#include <string_view>

namespace sim
{

/// What every document begins with.
constexpr const char* xml_declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" ?>\n";

/// `text` as an element's value can carry it: "(" for "<", ")" for ">", "/" for "%", a blank for
/// control characters other than line feeds, and at most max_value_bytes.
std::string value_text(std::string_view text);

/// Appends one element with value_text(text) as its value, and a line feed.
void append_element(std::string& xml, std::string_view name, std::string_view text);

/// append_element, but nothing at all for an empty text.
void append_filled_element(std::string& xml, std::string_view name, std::string_view text);

} // namespace sim
