// file_replace.cpp - see file_replace.hpp.
#include "data/file_replace.hpp"

#include "data/folder.hpp"
#include "data/owners.hpp"
#include "data/retry.hpp"
#include "data/text.hpp"
#include "data/unfinished_file.hpp"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

constexpr mode_t permission_bits = 07777;
constexpr int most_links = 40;

/// What a path stands for in the end.
struct replaced_file {
    heap_text path; // behind all links; null when memory is short or the links go in circles
    bool exists = false;
    struct stat status = {};
};

/// Where a link points to, seen from where the link is; null when path is no link or memory is
/// short.
heap_text link_followed(const char* path)
{
    char target[PATH_MAX];
    const ssize_t length = readlink(path, target, sizeof target - 1);
    if (length < 0)
        return nullptr;
    target[length] = '\0';
    if (target[0] == '/')
        return heap_text{str_dup(target)};
    return heap_text{str_append(folder_of(path).release(), target)};
}

replaced_file file_find(const char* path)
{
    replaced_file file;
    heap_text current{str_dup(path)};
    for (int link = 0; current && link < most_links; ++link) {
        heap_text next = link_followed(current.get());
        if (!next) {
            file.exists = stat(current.get(), &file.status) == 0;
            file.path = std::move(current);
            break;
        }
        current = std::move(next);
    }
    return file;
}

/// Puts a content at the beginning of an open file. True when all of it has reached the disk.
bool content_write(int fd, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t count =
            uninterrupted([&] { return write(fd, content.data(), content.size()); });
        if (count <= 0)
            return false;
        content.remove_prefix(static_cast<std::size_t>(count));
    }
    // Pipes and devices cannot be synced, and say so with EINVAL.
    return uninterrupted([&] { return fsync(fd); }) == 0 || errno == EINVAL;
}

/// Makes the rename itself last through a loss of power.
void folder_sync(const char* path)
{
    const unique_fd fd = folder_open(path);
    if (fd)
        uninterrupted([&] { return fsync(fd.get()); });
}

/// Whether an error says that the folder forbids the change, not that it failed.
bool is_refused(int error)
{
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

/// Gives a file the room that a content needs, so that writing it cannot fail half way, and cuts
/// what is longer. A file that cannot get the room stays as it is.
bool length_set(int fd, std::size_t length)
{
    struct stat status = {};
    if (fstat(fd, &status) != 0)
        return false;
    if (!S_ISREG(status.st_mode))
        return true;
    const auto wanted = static_cast<off_t>(length);
    int error = 0;
    do {
        error = wanted > 0 ? posix_fallocate(fd, 0, wanted) : 0;
    } while (error == EINTR);
    const off_t agreed = error == 0 ? wanted : status.st_size;
    return uninterrupted([&] { return ftruncate(fd, agreed); }) == 0 && error == 0;
}

bool write_in_place(const char* path, std::string_view content)
{
    const unique_fd fd{
        uninterrupted([&] { return open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC); })};
    return fd && length_set(fd.get(), content.size()) && content_write(fd.get(), content);
}

int owner_set(int fd, uid_t user, gid_t group)
{
    return uninterrupted([&] { return fchown(fd, user, group); });
}

/// Gives the new file the old one's mode, and its owner where that is allowed.
bool attributes_copy(int fd, const struct stat& status)
{
    if (owner_set(fd, status.st_uid, status.st_gid) != 0) {
        if (errno != EPERM)
            return false;
        // Not ours to give away; at least the group that may read it stays the same.
        owner_set(fd, static_cast<uid_t>(-1), status.st_gid);
    }
    return uninterrupted([&] { return fchmod(fd, status.st_mode & permission_bits); }) == 0;
}

bool write_beside(const replaced_file& file, const unfinished_file& beside,
                  std::string_view content)
{
    const bool is_ready = !file.exists || attributes_copy(beside.fd.get(), file.status);
    const bool is_written = is_ready && content_write(beside.fd.get(), content);
    const auto put_in_place = [&] { return rename(beside.name.get(), file.path.get()); };
    if (is_written && uninterrupted(put_in_place) == 0) {
        folder_sync(file.path.get());
        return true;
    }
    const int rename_error = is_written ? errno : 0;
    unlink(beside.name.get());
    // Some folders let nobody but its owner replace a file, and a mounted file cannot be replaced.
    return file.exists && is_refused(rename_error) && write_in_place(file.path.get(), content);
}

} // namespace

bool file_replace(const char* path, std::string_view content)
{
    const replaced_file file = file_find(path);
    if (!file.path)
        return false;
    if (file.exists && access(file.path.get(), W_OK) != 0)
        return false;
    if (file.exists && !S_ISREG(file.status.st_mode))
        return write_in_place(file.path.get(), content);
    unfinished_files_remove(file.path.get());
    const unfinished_file beside = unfinished_file_new(file.path.get());
    if (!beside.fd)
        return file.exists && is_refused(errno) && write_in_place(file.path.get(), content);
    return write_beside(file, beside, content);
}
