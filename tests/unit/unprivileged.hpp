// unprivileged.hpp - runs part of a test in a process of its own that is bound by file modes even
// when the tests run as root.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// The user and group that own nothing.
constexpr unsigned nobody_id = 65534;

/// The result of `piece` in a child process; false if the child did not end normally.
inline bool in_child(const std::function<bool()>& piece)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
        _exit(piece() ? EXIT_SUCCESS : EXIT_FAILURE);
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == EXIT_SUCCESS;
}

/// The same without root's rights. If the tests run as root, files that `piece` must own have to be
/// given to nobody_id first (give_to_nobody).
inline bool unprivileged(const std::function<bool()>& piece)
{
    return in_child([&piece] {
        if (geteuid() == 0 && (setgid(nobody_id) != 0 || setuid(nobody_id) != 0))
            return false;
        return piece();
    });
}

/// Gives a file or folder to the user of unprivileged().
inline bool give_to_nobody(const char* path)
{
    return geteuid() != 0 || chown(path, nobody_id, nobody_id) == 0;
}
