// web_text.hpp - texts, numbers and times as the web shows them.
//
// Texts come in ISO-8859-1 and may hold anything; what these functions return is safe where its
// comment says.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace tovrik
{

/// Text for a page, in UTF-8: safe between tags and within quotes of either kind. Control
/// characters are blanks.
std::string web_html(std::string_view latin1);

/// The value of a label of the metrics, in UTF-8, without its quotes. Control characters are
/// blanks.
std::string web_label(std::string_view latin1);

/// A field of the directory, in ISO-8859-1: "<", ">" and control characters, and with them tabs and
/// line feeds, are blanks.
std::string web_field(std::string_view latin1);

/// A number with commas: "18,402".
std::string web_number(std::uint64_t number);

/// A number in at most six characters for a narrow place: "1,204", "123k", "18M".
std::string web_short_number(std::uint64_t number);

/// A time span in its largest unit, or the two largest: "3 minutes", "12 days 4 hours". Negative
/// spans are "0 seconds".
std::string web_duration(std::time_t seconds, int units = 1);

/// A time as strftime's `format` has it, in UTC; "?" for a time outside the years 0 to 9999.
std::string web_utc(std::time_t time, const char* format);

} // namespace tovrik
