// transmission.hpp - presents a parsed transmission: logs it and shows it.
#pragma once

#include "data/server_registry.hpp"
#include "data/xml.hpp"

/// Presents one transmission: fills the template, writes the log, prints the text in the message
/// pane, and adds contacts and flight statistics if the settings ask for them.
void present_transmission(server_entry& entry, const xml_node* document);
