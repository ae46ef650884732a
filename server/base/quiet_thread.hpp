// quiet_thread.hpp - starts a thread that signals do not reach.
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace tovrik
{

/// Starts a thread in which every signal is blocked: signals are for the program. Returns an error
/// text, empty on success; `thread` is unchanged on failure.
std::string quiet_thread_start(std::thread& thread, std::function<void()> run);

} // namespace tovrik
