// utf8_text.hpp - texts in the encoding of web pages and JSON.
#pragma once

#include <string>
#include <string_view>

namespace tovrik
{

/// A text of ISO-8859-1 in UTF-8. Control characters stay.
std::string utf8_of_latin1(std::string_view latin1);

} // namespace tovrik
