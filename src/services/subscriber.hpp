// subscriber.hpp - asks for the address and the code by which servers know a subscriber.
#pragma once

#include "base/owners.hpp"
#include "data/server_registry.hpp"

/// Asks for the e-mail address, beginning with the entry's. Null if there was no answer.
heap_text subscriber_email_ask(const server_entry& entry);

/// Asks for the subscription code, beginning with the entry's. size: of the answer, its terminator
/// included. Null if there was no answer.
heap_text subscriber_code_ask(const server_entry& entry, int size);
