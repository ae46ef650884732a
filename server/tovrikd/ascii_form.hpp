// ascii_form.hpp - a text written in ASCII alone, and back.
//
// For a library that reads ASCII well and stumbles over other characters: it is given this form,
// and what it makes of it is turned back.
#pragma once

#include <string>
#include <string_view>

namespace tovrik
{

struct ascii_form {
    std::string mark; ///< letters and digits that the text does not hold
    std::string text; ///< in which the mark and two digits stand for each byte above 7F
};

/// Writes a text in ASCII.
ascii_form ascii_form_make(std::string_view original);

/// Turns a piece of the form, or a text that holds such pieces, back. Where a piece ends within
/// what stands for a byte, its rest stays as it is.
std::string ascii_form_original(const ascii_form& form, std::string_view piece);

} // namespace tovrik
