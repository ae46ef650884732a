// system_text.cpp - see system_text.hpp.
#include "server/base/system_text.hpp"

#include <cerrno>
#include <system_error>

namespace tovrik
{

std::string system_text(const std::string& what)
{
    return what + ": " + std::generic_category().message(errno);
}

} // namespace tovrik
