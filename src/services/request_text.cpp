// request_text.cpp - see request_text.hpp.
#include "services/request_text.hpp"

#include "data/text.hpp"
#include "ui/prompt.hpp"

#include <cstring>

namespace
{

/// Appends to the text. False when out of memory: then the text does not grow.
bool append_text(heap_text& text, const char* added)
{
    const std::size_t whole_length = (text ? std::strlen(text.get()) : 0) + std::strlen(added);
    text.reset(str_append(text.release(), added));
    return text && std::strlen(text.get()) == whole_length;
}

} // namespace

bool request_field_ask(heap_text& text, const request_field& field)
{
    const heap_text answer{prompt_input(field.size, field.question, field.hint, nullptr)};
    if (!answer && field.fallback == nullptr)
        return false;
    if (text && !append_text(text, "\t"))
        return false;
    return append_text(text, answer ? answer.get() : field.fallback);
}
