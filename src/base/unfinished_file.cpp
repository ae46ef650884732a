// unfinished_file.cpp - see unfinished_file.hpp.
#include "base/unfinished_file.hpp"

#include "base/path.hpp"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>

namespace
{

constexpr std::string_view suffix_begin = ".unfinished-"; // too long to be anybody's own choice
constexpr std::string_view suffix = ".unfinished-XXXXXX";
constexpr int max_attempts = 20;

using open_folder = std::unique_ptr<DIR, releaser<closedir>>;

bool is_letter_or_digit(char byte)
{
    return std::isalnum(static_cast<unsigned char>(byte)) != 0;
}

/// Whether a file name is that of an unfinished `base`.
bool is_unfinished_name(std::string_view name, std::string_view base)
{
    if (name.size() != base.size() + suffix.size() || !name.starts_with(base) ||
        !name.substr(base.size()).starts_with(suffix_begin))
        return false;
    return std::ranges::all_of(name.substr(base.size() + suffix_begin.size()), is_letter_or_digit);
}

/// Locks an open file for this program. False if another program holds the lock. On a file system
/// without locks, whoever makes a new file has it, and nobody gets one that was there before.
bool take_lock(int fd, bool is_new)
{
    if (flock(fd, LOCK_EX | LOCK_NB) == 0)
        return true;
    return is_new && errno != EWOULDBLOCK;
}

/// Whether an open file still has its name, and no other one.
bool is_named_once(int fd)
{
    struct stat status = {};
    return fstat(fd, &status) == 0 && status.st_nlink == 1;
}

bool is_own_file(int fd)
{
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

void remove_leftover(int folder, const char* name)
{
    const unique_fd fd{openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    if (fd && is_own_file(fd.get()) && take_lock(fd.get(), false))
        unlinkat(folder, name, 0);
}

} // namespace

unfinished_file unfinished_file_new(const char* path)
{
    for (int attempt = 0; attempt < max_attempts; ++attempt) {
        heap_text name = path_concatenate(path, suffix);
        if (!name)
            break;
        unique_fd fd{mkostemp(name.get(), O_CLOEXEC)};
        if (!fd && errno != EINTR)
            break;
        if (!fd)
            continue;
        // Until it is locked, another program may remove it as a leftover.
        if (take_lock(fd.get(), true) && is_named_once(fd.get()))
            return {std::move(name), std::move(fd)};
        unlink(name.get());
    }
    return {nullptr, unique_fd{}};
}

void unfinished_files_remove(const char* path)
{
    unique_fd fd = path_folder_open(path);
    const open_folder folder{fd ? fdopendir(fd.get()) : nullptr};
    if (!folder)
        return;
    const int folder_fd = fd.release();
    const char* slash = std::strrchr(path, '/');
    const std::string_view base = slash != nullptr ? slash + 1 : path;
    while (const dirent* entry = readdir(folder.get())) {
        if (is_unfinished_name(entry->d_name, base))
            remove_leftover(folder_fd, entry->d_name);
    }
}
