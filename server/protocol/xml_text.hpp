// xml_text.hpp - writes documents that the clients' small reader understands.
//
// That reader finds nothing without an XML declaration, knows no entities, keeps 511 bytes of a
// text and passes percent signs on to templates, in which they have a meaning.
#pragma once

#include <string>
#include <string_view>

namespace tovrik
{

/// The beginning of every document.
constexpr const char* xml_declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" ?>\n";

/// `text` as the value of an element: "(" for "<", ")" for ">", "/" for "%", a blank for every
/// control character but the line feed, and cut at max_value_bytes.
std::string value_text(std::string_view text);

/// Appends one element with value_text(text) as its value, and a line feed.
void append_element(std::string& xml, std::string_view name, std::string_view text);

/// The same, but appends nothing for an empty text.
void append_filled_element(std::string& xml, std::string_view name, std::string_view text);

} // namespace tovrik
