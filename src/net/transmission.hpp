// transmission.hpp - turns a received transmission into text, logs it and shows it.
#pragma once

#include "data/server_registry.hpp"
#include "data/xml.hpp"

/// Presents one transmission: fills the template, writes the log, prints the message pane, and adds
/// contacts and flight statistics as the settings ask for them.
void present_transmission(server_entry& entry, const xml_node* document);

/// Replaces every "%path%" of a text by the document's value at that path (nothing when missing).
/// A "%" without a partner becomes "#"; so does every further one after a bounded number of
/// replacements or once the text has outgrown its bound, since values can name placeholders too.
/// text: malloc'ed, may be null; may move. The filled text, which the caller owns.
char* fill_template(char* text, const xml_node* document);
