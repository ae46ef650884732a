// mail_address.hpp - tells addresses of mail from other texts.
#pragma once

#include <string_view>

namespace tovrik
{

/// Whether a text is an address of mail in its plain form, such as me@example.org: letters, digits
/// and marks of ASCII that need no quotes, "@" and the name of a host. So it holds no blank, no
/// line end and nothing that begins another address, and it is no option of a program.
bool is_mail_address(std::string_view text);

} // namespace tovrik
