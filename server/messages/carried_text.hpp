// carried_text.hpp - texts from outside in the form that clients can carry.
//
// Owns the conversion from UTF-8 to ISO-8859-1 and the cutting of long texts. value_text replaces
// what a document cannot hold when the document is written.
#pragma once

#include "server/base/limits.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// `bytes` if they are valid UTF-8; otherwise they are taken for ISO-8859-1 and converted to UTF-8.
std::string as_utf8(std::string_view bytes);

/// A text in ISO-8859-1 in which every line ends with a line feed, whatever ended it before.
/// Control characters become blanks and typographic marks their plain forms. Any other character
/// that the set lacks, and any byte that is not UTF-8, becomes a question mark.
std::string latin1_text(std::string_view utf8);

/// Cuts a message's content into parts of at most max_value_bytes; those after the first have at
/// most `max_later_bytes`, which is no more than that. A cut comes at the end of a line
/// where there is one, and drops its line feed; otherwise it comes within the line. Line feeds at
/// the very end are dropped. There is at least one part, which may be empty.
std::vector<std::string> content_parts(std::string_view content,
                                       std::size_t max_later_bytes = max_value_bytes);

/// Room for the line that numbers a part, its line feed included.
constexpr std::size_t max_part_mark_bytes = 32;

/// The same, but if there are several parts, each after the first begins with a line such as
/// "(part 2 of 3)". With it, it has at most max_value_bytes.
std::vector<std::string> numbered_parts(std::string_view content);

} // namespace tovrik
