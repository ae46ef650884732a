// exit_status.cpp - see exit_status.hpp.
#include "server/tovrikd/exit_status.hpp"

#include <cstdio>

namespace tovrik
{

int exit_complaining(const std::vector<std::string>& lines, int status)
{
    for (const std::string& line : lines)
        std::fprintf(stderr, "tovrikd: %s\n", line.c_str());
    return status;
}

} // namespace tovrik
