// home.cpp - see home.hpp.
#include "base/home.hpp"

#include "base/retry.hpp"

#include <cstdlib>
#include <fcntl.h>

home_visit::home_visit()
{
    const char* home = std::getenv("HOME");
    if (home == nullptr)
        return;
    // A descriptor leads back even if the former folder's path is too long or has been renamed.
    former = unique_fd{retry_on_eintr([] { return open(".", O_PATH | O_DIRECTORY | O_CLOEXEC); })};
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
