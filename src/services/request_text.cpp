// request_text.cpp - see request_text.hpp.
#include "services/request_text.hpp"

#include "data/text.hpp"
#include "ui/prompt.hpp"

bool request_field_ask(heap_text& text, const request_field& field)
{
    const heap_text answer{prompt_input(field.size, field.question, field.hint, nullptr)};
    if (!answer && field.fallback == nullptr)
        return false;
    if (text)
        text.reset(str_append(text.release(), "\t"));
    text.reset(str_append(text.release(), answer ? answer.get() : field.fallback));
    return text != nullptr;
}
