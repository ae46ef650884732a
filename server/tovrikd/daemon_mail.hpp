// daemon_mail.hpp - what a configuration means for the mails.
#pragma once

#include "server/mail/mailing.hpp"
#include "server/tovrikd/configuration.hpp"

#include <string>

namespace tovrik
{

mail_options make_mail_options(const configuration& chosen);

/// What keeps mails that are offered from being sent; empty: nothing that can be seen from here.
std::string mail_complaint(const configuration& chosen);

} // namespace tovrik
