// retry.hpp - system calls that a signal may interrupt, called until they have an answer.
#pragma once

#include <cerrno>

/// What `call` answers, a function that fails with -1 and errno: it is called again for as long as
/// a signal interrupts it.
template <typename Call> auto uninterrupted(Call call)
{
    auto answer = call();
    while (answer == -1 && errno == EINTR)
        answer = call();
    return answer;
}
