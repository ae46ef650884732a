// request_text.hpp - collects a request's fields, joined by tabs, from prompts.
#pragma once

#include "base/owners.hpp"

/// One prompt of a request.
struct request_field {
    const char* question;
    int size; // of the answer, its terminator included
    const char* hint;
    const char* fallback; // what an optional field holds without an answer; null: it is required
};

/// Asks for one field and appends its value to the text, after a tab unless the text is null. False
/// if a required field was not answered, and when out of memory.
bool request_field_ask(heap_text& text, const request_field& field);
