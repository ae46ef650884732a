// toml_characters.hpp - finds characters where TOML has none but ASCII's.
#pragma once

#include <string_view>

namespace tovrik
{

/// The line, from 1, of the first byte above 7F that is neither in quotes nor in a comment; 0 if
/// there is none. TOML's library stumbles over some of them. Quotes that are never closed reach to
/// the end of their line, or of the text if there are three.
unsigned toml_foreign_line(std::string_view text);

} // namespace tovrik
