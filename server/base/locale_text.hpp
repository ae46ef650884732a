// locale_text.hpp - what a user typed, as the network carries it.
#pragma once

#include <optional>
#include <string>

namespace tovrik
{

/// `text`, which is in the character set of the locale that the program has set, in ISO-8859-1.
/// Nothing if a part of it is no character there, or one that ISO-8859-1 lacks.
std::optional<std::string> locale_to_latin1(const std::string& text);

} // namespace tovrik
