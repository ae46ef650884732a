// typed_password.hpp - a password as the client sends it, made of what was typed here.
#pragma once

#include <string>

namespace tovrik
{

/// The bytes of a password, or why it is refused.
struct typed_password {
    std::string bytes = {}; ///< ISO-8859-1
    std::string error = {}; ///< empty on success
};

/// Converts what was typed from the character set of the locale (LC_CTYPE) to ISO-8859-1. Refuses
/// what nobody can type into the client: nothing, more than 39 characters, control characters, and
/// characters that ISO-8859-1 lacks.
typed_password typed_password_of(const std::string& typed);

} // namespace tovrik
