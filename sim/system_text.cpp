// system_text.cpp - see system_text.hpp.
#include "sim/system_text.hpp"

#include <cerrno>
#include <system_error>

namespace sim
{

std::string system_text(const std::string& what)
{
    return what + ": " + std::generic_category().message(errno);
}

} // namespace sim
