// mail_address.cpp - see mail_address.hpp.
#include "server/base/mail_address.hpp"

#include "server/base/text_fields.hpp"

#include <algorithm>
#include <cstddef>

namespace tovrik
{
namespace
{

constexpr std::size_t max_address_bytes = 254;
constexpr std::size_t max_local_bytes = 64;

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || is_digit(c);
}

/// Whether a text is made of parts between dots, none of which is empty or has another character
/// than letters, digits and `marks`.
bool is_dotted(std::string_view text, std::string_view marks)
{
    return std::ranges::all_of(split_fields(text, '.'), [marks](std::string_view part) {
        return !part.empty() && std::ranges::all_of(part, [marks](char c) {
            return is_letter_or_digit(c) || marks.find(c) != std::string_view::npos;
        });
    });
}

} // namespace

bool is_mail_address(std::string_view text)
{
    const auto at = text.find('@');
    if (text.size() > max_address_bytes || at == std::string_view::npos || at > max_local_bytes)
        return false;
    return !text.starts_with('-') && is_dotted(text.substr(0, at), "!#$%&'*+-/=?^_`{|}~") &&
           is_dotted(text.substr(at + 1), "-");
}

} // namespace tovrik
