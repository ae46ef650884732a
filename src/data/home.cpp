// home.cpp - see home.hpp.
#include "data/home.hpp"

#include "data/retry.hpp"

#include <cstdlib>
#include <fcntl.h>

home_visit::home_visit()
{
    const char* home = std::getenv("HOME");
    if (home == nullptr)
        return;
    // A descriptor finds the way back whatever the former folder's path is long or has become.
    former = unique_fd{uninterrupted([] { return open(".", O_PATH | O_DIRECTORY | O_CLOEXEC); })};
    entered = chdir(home) == 0;
    there = entered;
}

home_visit::~home_visit()
{
    if (entered && !staying && former)
        static_cast<void>(fchdir(former.get()) == 0);
}

const char* home_name()
{
    const char* home = std::getenv("HOME");
    return home != nullptr ? home : "";
}
