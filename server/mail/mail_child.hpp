// mail_child.hpp - one run of the mail program, without ever waiting for it.
//
// The program is started without a shell, in a process group of its own and with no descriptors but
// the three standard ones: the mail is its input, and what it prints is read as complaints.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tovrik
{

struct mail_child {
    pid_t pid = -1;                ///< -1: none runs
    unique_fd end{};               ///< readable when it has ended
    unique_fd output{};            ///< what it prints
    std::string printed = {};      ///< the beginning of that
    std::size_t printed_bytes = 0; ///< all of it
    time_point end_by = never;
    std::string killed_because = {}; ///< why it was killed; empty: it was not
    bool has_ended = false;
};

/// A file in memory with a mail, at its beginning. Empty if the system gives none, with errno set.
unique_fd mail_file_make(std::string_view head, std::string_view body);

/// Starts the mail program, whose words come from mail_command_words, and gives it `mail`. The loop
/// then watches it with `epoll_fd`. It has time until `end_by`. Returns an error text, empty on
/// success.
std::string mail_child_start(mail_child& child, const std::vector<std::string>& words, int mail,
                             int epoll_fd, time_point end_by);

/// Handles a readiness event. False if `fd` is none of the child's.
bool mail_child_on_event(mail_child& child, int fd);

/// What has become of the mail: nothing while the program runs; then an error text in one line,
/// empty if it took the mail. A program that runs too long or prints without end is killed, with
/// its group.
std::optional<std::string> mail_child_result(mail_child& child, time_point now);

/// Waits for the end for at most `patience`, and kills a program that goes on. Returns what
/// mail_child_result would; an error text if none runs.
std::string mail_child_finish(mail_child& child, std::chrono::milliseconds patience);

} // namespace tovrik
