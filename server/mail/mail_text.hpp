// mail_text.hpp - writes mails as the mail program takes them.
//
// Texts are in ISO-8859-1, as everywhere in the server; mails are in UTF-8. Nothing from outside
// can end a header: addresses are checked, and in texts control characters become "?".
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace tovrik
{

/// The body of a mail, in the form in which it is sent.
struct mail_body {
    std::string text = {}; ///< in UTF-8, in lines that mail systems carry
    bool is_ascii = true;
};

/// Makes a body. Long lines are cut into several.
mail_body mail_body_make(std::string_view latin1);

/// What stands above a body.
struct mail_head {
    std::string from = {}; ///< is_mail_address
    std::string to = {};   ///< is_mail_address
    std::string subject = {};
    std::string id = {}; ///< see mail_id
    std::time_t date = 0;
};

/// The identity of the mail about a day to an address: the same whenever it is made, so that a
/// mail system can tell a double. `uuid` is the server's, `from` its address.
std::string mail_id(std::string_view uuid, std::string_view from, std::string_view to,
                    std::int64_t day);

/// The head of a mail, with the empty line that ends it.
std::string mail_head_text(const mail_head& head, bool is_ascii);

} // namespace tovrik
