// add_password.hpp - what tovrikd --add-password does.
#pragma once

#include <string>

namespace tovrik
{

/// Asks twice on the terminal for a password, and adds it under `label` to the file of passwords
/// that the configuration at `configuration_path` names; makes the file, with mode 0600, if there
/// is none; the owner's choice of another mode stays. Says on standard output what was added, and
/// on standard error why nothing was. Returns the exit status: 0, status_failed, or
/// status_bad_usage for a wrong label and a wrong configuration. Raises the signal that ended the
/// question, if one did.
int add_password(const std::string& configuration_path, const std::string& label);

} // namespace tovrik
