// typed_password.cpp - see typed_password.hpp.
#include "server/tovrikd/typed_password.hpp"

#include "server/base/limits.hpp"
#include "server/base/locale_text.hpp"
#include "server/base/text_fields.hpp"

#include <algorithm>
#include <utility>

namespace tovrik
{
namespace
{

bool is_typeable(const std::string& latin1)
{
    return std::ranges::none_of(latin1,
                                [](char c) { return is_control(static_cast<unsigned char>(c)); });
}

} // namespace

typed_password typed_password_of(const std::string& typed)
{
    if (typed.empty())
        return {.error = "a password cannot be empty"};
    auto bytes = locale_to_latin1(typed);
    if (!bytes || !is_typeable(*bytes))
        return {.error = "it has a character that cannot be typed into the client"};
    if (bytes->size() > max_password_bytes)
        return {.error = "the client takes at most " + std::to_string(max_password_bytes) +
                         " characters"};
    return {.bytes = std::move(*bytes)};
}

} // namespace tovrik
