// retry.hpp - retries system calls that a signal interrupted.
#pragma once

#include <cerrno>

/// Calls `call`, a function that fails with -1 and errno, again as long as it fails with EINTR.
/// Its last result.
template <typename Call> auto retry_on_eintr(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}
