// owned_text.hpp - texts that a record owns as plain pointers.
#pragma once

#include <cstdlib>

/// Frees the text that a record's field owns and puts another in its place. text: malloc'ed, the
/// field's from now on; null means "none".
inline void owned_text_replace(char*& field, char* text)
{
    std::free(field);
    field = text;
}

/// Frees the text that a record's field owns; the field then holds none.
inline void owned_text_clear(char*& field)
{
    owned_text_replace(field, nullptr);
}
