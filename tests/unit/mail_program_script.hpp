// mail_program_script.hpp - mail programs for tests: scripts that keep what they get as files.
#pragma once

#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

/// Puts the mail into a file of its own in the folder "mails", whole or not at all.
constexpr const char* keep_mail = "part=$(mktemp \"$HOME_OF_TEST/mails/part.XXXXXX\") || exit 75\n"
                                  "cat >\"$part\" || exit 75\n"
                                  "mv \"$part\" \"$HOME_OF_TEST/mails/mail${part##*/part}\"\n";

/// Writes a program that is a script, and returns its path. The script knows the home as
/// $HOME_OF_TEST. A program that is there is replaced at once.
inline std::string write_mail_program(const temp_home& home, const std::string& script)
{
    if (!home.read_file("mails/.made")) {
        home.make_folder("mails");
        home.write_file("mails/.made", "");
    }
    const std::string path = home.path_of("mailer");
    home.write_file("mailer.new",
                    "#!/bin/sh\nHOME_OF_TEST='" + home.path() + "'\n" + script + "\n");
    EXPECT_EQ(chmod(home.path_of("mailer.new").c_str(), 0755), 0);
    EXPECT_EQ(rename(home.path_of("mailer.new").c_str(), path.c_str()), 0);
    return path;
}

/// All mails that were kept, in any order.
inline std::vector<std::string> kept_mails(const temp_home& home)
{
    std::vector<std::string> mails;
    for (const std::string& name : home.files()) {
        if (!name.starts_with("mails/mail."))
            continue;
        mails.push_back(home.read_file(name).value_or(""));
    }
    return mails;
}

/// The value of a header of a mail; empty if it has none.
inline std::string header_of(const std::string& mail, const std::string& name)
{
    const std::string head = "\n" + mail.substr(0, mail.find("\n\n") + 1);
    const auto begin = head.find("\n" + name + ": ");
    if (begin == std::string::npos)
        return {};
    const auto value = begin + name.size() + 3;
    return head.substr(value, head.find('\n', value) - value);
}

/// Whom the kept mails are for, in alphabetical order.
inline std::vector<std::string> mailed_addresses(const temp_home& home)
{
    std::vector<std::string> addresses;
    for (const std::string& mail : kept_mails(home))
        addresses.push_back(header_of(mail, "To"));
    std::ranges::sort(addresses);
    return addresses;
}
