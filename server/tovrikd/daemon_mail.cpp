// daemon_mail.cpp - see daemon_mail.hpp.
#include "server/tovrikd/daemon_mail.hpp"

#include "server/mail/mail_command.hpp"

namespace tovrik
{

mail_options make_mail_options(const configuration& chosen)
{
    return {.is_offered = chosen.services.mailing,
            .command = mail_command_words(chosen.mail.command),
            .from = chosen.mail.from,
            .at_minute = chosen.mail.at_minute,
            .never_to = chosen.mail.never_to};
}

std::string mail_complaint(const configuration& chosen)
{
    std::string path;
    return chosen.services.mailing
               ? mail_command_find(mail_command_words(chosen.mail.command), path)
               : "";
}

} // namespace tovrik
