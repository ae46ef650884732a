// mailing.hpp - subscriptions to the daily reports that a server mails.
#pragma once

#include "data/server_registry.hpp"

/// The user's command for mailings: menu, prompts, a request for those choices that have one. Keeps
/// the address and the code that were typed in the entry.
void mailing_dialog(server_entry& entry);
