// transmission.hpp - presents a parsed transmission: fills its template, logs it and shows it.
#pragma once

#include "data/server_registry.hpp"
#include "data/xml.hpp"

/// Presents one transmission: fills the template, writes the log, prints the text in the message
/// pane, and adds contacts and flight statistics if the settings ask for them.
void present_transmission(server_entry& entry, const xml_node* document);

/// Replaces every "%path%" of a text by the document's value at that path, or by nothing if there
/// is none. A "%" without a partner becomes "#". Values may name placeholders too, so after a
/// bounded number of replacements, and before one that would make the text longer than its bound or
/// the work larger than its bounds, every "%" that is left becomes "#" as well.
/// text: malloc'ed, may be null, may move.
/// The filled text, which the caller owns.
char* fill_template(char* text, const xml_node* document);
