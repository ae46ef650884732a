// mailing.hpp - subscriptions to the daily reports that a server mails.
#pragma once

#include "data/server_registry.hpp"

/// The user's command for mailings: menu, prompts, and a request for the choices that have one. The
/// address and the code that were typed are kept in the entry.
void mailing_dialog(server_entry& entry);
