// file_replace.cpp - see file_replace.hpp.
#include "data/file_replace.hpp"

#include "data/owners.hpp"
#include "data/text.hpp"

#include <cerrno>
#include <climits>
#include <cstring>
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

/// The folder part of a path, with its slash; the empty text for a bare name.
heap_text folder_of(const char* path)
{
    heap_text folder{str_dup(path)};
    if (folder) {
        char* slash = std::strrchr(folder.get(), '/');
        *(slash != nullptr ? slash + 1 : folder.get()) = '\0';
    }
    return folder;
}

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

/// Lets `write` fill a stream on a descriptor. True when all of it has reached the disk.
bool content_write(unique_fd fd, void (*write)(std::FILE* file))
{
    unique_file stream{fdopen(fd.get(), "w")};
    if (!stream)
        return false;
    fd.release();
    write(stream.get());
    const bool is_written = std::fflush(stream.get()) == 0 && std::ferror(stream.get()) == 0;
    // Pipes and devices cannot be synced, and say so with EINVAL.
    const bool is_synced = fsync(fileno(stream.get())) == 0 || errno == EINVAL;
    return std::fclose(stream.release()) == 0 && is_written && is_synced;
}

/// Makes the rename itself last through a loss of power.
void folder_sync(const char* path)
{
    const heap_text folder = folder_of(path);
    if (!folder)
        return;
    const char* name = folder.get()[0] != '\0' ? folder.get() : ".";
    const unique_fd fd{open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (fd)
        fsync(fd.get());
}

/// Whether an error says that the folder forbids the change, not that it failed.
bool is_refused(int error)
{
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

bool write_in_place(const char* path, void (*write)(std::FILE* file))
{
    unique_fd fd{open(path, O_WRONLY | O_TRUNC | O_NONBLOCK | O_CLOEXEC)};
    return fd && content_write(std::move(fd), write);
}

/// Gives the new file the old one's mode, and its owner where that is allowed.
bool attributes_copy(int fd, const struct stat& status)
{
    if (fchown(fd, status.st_uid, status.st_gid) != 0) {
        if (errno != EPERM)
            return false;
        // Not ours to give away; at least the group that may read it stays the same.
        static_cast<void>(fchown(fd, static_cast<uid_t>(-1), status.st_gid) == 0);
    }
    return fchmod(fd, status.st_mode & permission_bits) == 0;
}

bool write_beside(const replaced_file& file, const char* beside, unique_fd fd,
                  void (*write)(std::FILE* file))
{
    const bool is_ready = !file.exists || attributes_copy(fd.get(), file.status);
    const bool is_written = is_ready && content_write(std::move(fd), write);
    if (is_written && rename(beside, file.path.get()) == 0) {
        folder_sync(file.path.get());
        return true;
    }
    const int rename_error = is_written ? errno : 0;
    unlink(beside);
    // Some folders let nobody but its owner replace a file, and a mounted file cannot be replaced.
    return file.exists && is_refused(rename_error) && write_in_place(file.path.get(), write);
}

} // namespace

bool file_replace(const char* path, void (*write)(std::FILE* file))
{
    const replaced_file file = file_find(path);
    if (!file.path)
        return false;
    if (file.exists && access(file.path.get(), W_OK) != 0)
        return false;
    if (file.exists && !S_ISREG(file.status.st_mode))
        return write_in_place(file.path.get(), write);
    const heap_text beside{str_append(str_dup(file.path.get()), ".XXXXXX")};
    if (!beside)
        return false;
    unique_fd fd{mkostemp(beside.get(), O_CLOEXEC)};
    if (!fd)
        return file.exists && is_refused(errno) && write_in_place(file.path.get(), write);
    return write_beside(file, beside.get(), std::move(fd), write);
}
