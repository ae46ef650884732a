// passwords.hpp - the file of passwords: a line "label:digest" for each.
//
// The digest is that of docs/protocol.md, "Access": MD5 over the bytes typed, as 32 lower-case
// hexadecimal digits. It is as good as the password for who reads it, so the file must not be open
// to everybody.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

struct password {
    std::string label;
    std::string digest;
    bool operator==(const password&) const = default;
};

struct passwords_result {
    std::vector<password> passwords;   ///< in the order of the file
    std::vector<std::string> mistakes; ///< "FILE:LINE: what"; if there is any, use no password
};

/// Reads the file of passwords. It is a mistake if it cannot be read, is no ordinary file, gives
/// others than its owner and group any right, is larger than max_configuration_bytes, has more than
/// max_passwords lines, a line of another form, or a label twice. Empty lines mean nothing.
passwords_result passwords_read(const std::string& path);

/// The label of the password with this digest; empty if there is none. Takes the same time whether
/// there is one and whichever it is.
std::string password_label_of(const std::vector<password>& passwords, std::string_view digest);

/// Whether a text can be the label of a password: 1 to 40 printable characters of ASCII, no ":".
bool is_password_label(std::string_view label);

} // namespace tovrik
