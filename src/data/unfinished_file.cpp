// unfinished_file.cpp - see unfinished_file.hpp.
#include "data/unfinished_file.hpp"

#include "data/folder.hpp"
#include "data/text.hpp"

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

constexpr std::string_view mark = ".unfinished-"; // long enough to be nobody's own choice
constexpr std::string_view varied = "XXXXXX";
constexpr int most_tries = 20;

using open_folder = std::unique_ptr<DIR, releaser<closedir>>;

bool is_letter_or_digit(char byte)
{
    return std::isalnum(static_cast<unsigned char>(byte)) != 0;
}

/// Whether a file name is that of an unfinished `base`.
bool is_unfinished_name(std::string_view name, std::string_view base)
{
    if (!name.starts_with(base) || !name.substr(base.size()).starts_with(mark))
        return false;
    const std::string_view end = name.substr(base.size() + mark.size());
    return end.size() == varied.size() && std::ranges::all_of(end, is_letter_or_digit);
}

/// Takes an open file for this program. False when another one has it. A file system that knows no
/// locks gives it to everybody who makes a new file, and to nobody who found one.
bool lock_take(int fd, bool is_new)
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

void leftover_remove(int folder, const char* name)
{
    const unique_fd fd{openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    if (fd && is_own_file(fd.get()) && lock_take(fd.get(), false))
        unlinkat(folder, name, 0);
}

} // namespace

unfinished_file unfinished_file_new(const char* path)
{
    for (int tries = 0; tries < most_tries; ++tries) {
        heap_text name{str_append(str_append(str_dup(path), mark.data()), varied.data())};
        if (!name)
            break;
        unique_fd fd{mkostemp(name.get(), O_CLOEXEC)};
        if (!fd && errno != EINTR)
            break;
        if (!fd)
            continue;
        // Before it is locked, another program may take it for a leftover.
        if (lock_take(fd.get(), true) && is_named_once(fd.get()))
            return {std::move(name), std::move(fd)};
        unlink(name.get());
    }
    return {nullptr, unique_fd{}};
}

void unfinished_files_remove(const char* path)
{
    unique_fd fd = folder_open(path);
    const open_folder folder{fd ? fdopendir(fd.get()) : nullptr};
    if (!folder)
        return;
    const int folder_fd = fd.release();
    const char* slash = std::strrchr(path, '/');
    const std::string_view base = slash != nullptr ? slash + 1 : path;
    while (const dirent* entry = readdir(folder.get())) {
        if (is_unfinished_name(entry->d_name, base))
            leftover_remove(folder_fd, entry->d_name);
    }
}
