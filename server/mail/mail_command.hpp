// mail_command.hpp - the configured command of the mail program.
#pragma once

#include <string>
#include <vector>

namespace tovrik
{

/// The words of a command, which blanks separate. No shell looks at them, so nothing in them has a
/// meaning of its own.
std::vector<std::string> mail_command_words(const std::string& command);

/// Finds the program of a command: a path from the root, or a name that is looked for in the
/// folders of PATH. `path` becomes where it is. Returns an error text, empty on success.
std::string mail_command_find(const std::vector<std::string>& words, std::string& path);

} // namespace tovrik
