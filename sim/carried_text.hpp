// carried_text.hpp - texts from outside in the form that clients can carry.
//
// Owns the way from UTF-8 to ISO-8859-1 and the cutting of long texts. What a document cannot hold
// is replaced when it is written, by value_text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim
{

/// `bytes`, if they are UTF-8; otherwise taken as ISO-8859-1 and made UTF-8.
std::string as_utf8(std::string_view bytes);

/// A text in ISO-8859-1 with the end of every line a line feed, whatever it was. Control characters
/// become blanks; typographic marks their plain forms; any other character that the set does not
/// have, a question mark. `utf8` is taken as as_utf8 leaves it.
std::string latin1_text(std::string_view utf8);

/// Cuts a message's content into parts of at most max_value_bytes: at the ends of lines where it
/// can, the line feed there being left out, else within a line. Line feeds at the very end are
/// dropped. At least one part, which may be empty.
std::vector<std::string> content_parts(std::string_view content);

} // namespace sim
