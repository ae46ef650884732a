// add_password.cpp - see add_password.hpp.
#include "server/tovrikd/add_password.hpp"

#include "base/file_replace.hpp"
#include "base/md5.hpp"
#include "server/base/system_text.hpp"
#include "server/base/whole_file.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/configuration_read.hpp"
#include "server/tovrikd/exit_status.hpp"
#include "server/tovrikd/hidden_lines.hpp"
#include "server/tovrikd/passwords.hpp"
#include "server/tovrikd/typed_password.hpp"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace tovrik
{
namespace
{

/// Room for what a password may be in any character set, and for one that is too long to be told.
constexpr std::size_t max_typed_bytes = 1000;

/// The digest of a password that was asked for twice, or why there is none.
struct asked_digest {
    std::string digest = {};
    std::string error = {};
    int signal = 0; ///< that ended the questions
};

asked_digest ask_digest(const std::string& label)
{
    const hidden_lines lines =
        hidden_lines_ask({"Password for \"" + label + "\": ", "The same again: "}, max_typed_bytes,
                         [](const std::string& typed) { return typed_password_of(typed).error; });
    if (lines.signal != 0 || !lines.error.empty())
        return {.error = lines.error, .signal = lines.signal};
    if (lines.typed.front() != lines.typed.back())
        return {.error = "the two are different"};
    typed_password made = typed_password_of(lines.typed.front());
    char hex[33];
    md5_hex(made.bytes, hex);
    explicit_bzero(made.bytes.data(), made.bytes.size());
    return {.digest = hex};
}

/// The text of the file of passwords, empty if there is none; or what is wrong with it.
struct passwords_text {
    std::string text = {};
    std::vector<std::string> mistakes = {};
};

passwords_text read_for_adding(const std::string& path, const std::string& label)
{
    if (access(path.c_str(), F_OK) != 0 && errno == ENOENT)
        return {};
    const passwords_result present = passwords_read(path);
    if (!present.mistakes.empty())
        return {.mistakes = present.mistakes};
    if (std::ranges::find(present.passwords, label, &password::label) != present.passwords.end())
        return {.mistakes = {path + ": the label \"" + label + "\" is there already"}};
    if (present.passwords.size() >= max_passwords)
        return {.mistakes = {path + ": it is full"}};
    whole_file whole = read_whole_file(path, max_configuration_bytes);
    if (!whole.error.empty())
        return {.mistakes = {whole.error}};
    if (!whole.text.empty() && !whole.text.ends_with('\n'))
        whole.text += '\n';
    return {.text = std::move(whole.text)};
}

/// Adds a line to the file of passwords as it is now.
int write_password(const std::string& path, const std::string& label, const std::string& digest)
{
    passwords_text present = read_for_adding(path, label);
    if (!present.mistakes.empty())
        return exit_complaining(present.mistakes, status_failed);
    present.text += label + ":" + digest + "\n";
    if (!file_replace(path.c_str(), present.text, file_readers::as_before))
        return exit_complaining({system_text("cannot write " + path)}, status_failed);
    std::printf("tovrikd: \"%s\" is added to %s\n", label.c_str(), path.c_str());
    return 0;
}

int ask_and_write(const std::string& path, const std::string& label)
{
    // What keeps the password from being added is told before anybody types it.
    const passwords_text present = read_for_adding(path, label);
    if (!present.mistakes.empty())
        return exit_complaining(present.mistakes, status_failed);
    const asked_digest asked = ask_digest(label);
    if (asked.signal != 0) {
        raise(asked.signal);
        return status_failed;
    }
    if (!asked.error.empty())
        return exit_complaining({asked.error}, status_failed);
    return write_password(path, label, asked.digest);
}

} // namespace

int add_password(const std::string& configuration_path, const std::string& label)
{
    std::setlocale(LC_CTYPE, "");
    if (!is_password_label(label))
        return exit_complaining(
            {"a label must have 1 to 40 printable characters of ASCII, and no colon"},
            status_bad_usage);
    const configuration_result read = configuration_read(configuration_path);
    if (!read.mistakes.empty())
        return exit_complaining(read.mistakes, status_bad_usage);
    const std::string& path = read.made.access.passwords_file;
    if (path.empty())
        return exit_complaining({configuration_path + ": passwords_file in [access] names no file"},
                                status_bad_usage);
    return ask_and_write(path, label);
}

} // namespace tovrik
