// system_text.hpp - what the system says about a call that failed.
#pragma once

#include <string>

namespace tovrik
{

/// `what`, a colon and the system's text for errno.
std::string system_text(const std::string& what);

} // namespace tovrik
