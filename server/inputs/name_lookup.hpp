// name_lookup.hpp - looks names up without blocking the server's loop.
#pragma once

#include "base/owners.hpp"

#include <atomic>
#include <memory>
#include <netinet/in.h>
#include <string>

namespace tovrik
{

/// What a thread finds out about a name. The thread and who waits for it own it together.
struct name_question {
    std::string host;
    std::atomic<bool> is_answered = false; ///< `place` and `error` may be read
    unique_fd answered;                    ///< readable when the thread has ended
    sockaddr_in place{};                   ///< its address; valid if `error` is empty
    std::string error{};
};

/// Begins to look a name up; an address is an answer without a thread. Wait until `answered` of the
/// result is readable; then `is_answered`. Who loses interest just drops the result.
/// Null when the system has no descriptor or no thread to give.
std::shared_ptr<const name_question> name_lookup(const std::string& host);

} // namespace tovrik
