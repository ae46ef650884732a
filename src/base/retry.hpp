// retry.hpp - retries system calls that a signal interrupted.
#pragma once

#include <cerrno>

/// The result of `call`, a function that fails with -1 and errno. It is called again as long as it
/// fails with EINTR.
template <typename Call> auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}
