// text_fields.hpp - cuts, checks and compares the fields of requests.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// Length of the shortest airline code, IATA's. A code may contain digits.
constexpr std::size_t min_airline_code_length = 2;

/// The parts of `text` between separators: at least one, which may be empty. They point into
/// `text`.
std::vector<std::string_view> split_fields(std::string_view text, char separator);

/// Whether a field has at most `limit` bytes and no control character.
bool is_clean_field(std::string_view field, std::size_t limit);

/// Whether a character is a decimal digit.
bool is_digit(char c);

/// Whether a character of ISO-8859-1 is a control character.
bool is_control(char32_t character);

/// `text` with the letters a to z as capitals.
std::string upper_case(std::string_view text);

/// A flight number in the form in which two are compared: in capitals, without leading zeros after
/// the airline's code. LH0400 and lh400 are the same flight.
std::string flight_key(std::string_view flight_number);

/// Whether `text` matches `pattern`, in which "_" and "?" stand for any one character and "*" for
/// any number of characters. Case is ignored for a to z.
bool wildcard_match(std::string_view pattern, std::string_view text);

} // namespace tovrik
