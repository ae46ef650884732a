// template.hpp - the text that a transmission becomes: a template, filled from a document.
#pragma once

#include "data/xml.hpp"

/// The template for a document, with lines for a message text only if there is one: malloc'ed, and
/// the caller's. NULL if memory ran out.
char* template_make(const xml_node* document);

/// Replaces every "%path%" of a text by the document's value at that path, or by nothing if there
/// is none. A "%" without a partner becomes "#". Values may name placeholders too, so after a
/// bounded number of replacements, and before one that would make the text longer than its bound or
/// the work larger than its bounds, every "%" that is left becomes "#" as well.
/// text: malloc'ed, may be null, may move.
/// The filled text, which the caller owns.
char* fill_template(char* text, const xml_node* document);
