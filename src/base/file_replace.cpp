// file_replace.cpp - see file_replace.hpp.
#include "base/file_replace.hpp"

#include "base/owners.hpp"
#include "base/path.hpp"
#include "base/retry.hpp"
#include "base/unfinished_file.hpp"
#include "base/write_all.hpp"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

constexpr mode_t permission_bits = 07777;
constexpr mode_t rights_of_others = S_IRWXG | S_IRWXO;
constexpr int max_links = 40;

/// The file that a path leads to.
struct replaced_file {
    heap_text path; // after all links; null when out of memory or if the links form a circle
    bool exists = false;
    struct stat status = {};
    mode_t mode = 0; // the permissions to give it
};

/// The path that a link points to; null if `path` is not a link or when out of memory.
heap_text follow_link(const char* path)
{
    char target[PATH_MAX];
    const ssize_t length = readlink(path, target, sizeof target - 1);
    if (length < 0)
        return nullptr;
    target[length] = '\0';
    return path_concatenate(target[0] == '/' ? std::string_view{} : path_folder(path), target);
}

replaced_file find_file(const char* path)
{
    replaced_file file;
    heap_text current = path_concatenate(path);
    for (int link = 0; current && link < max_links; ++link) {
        heap_text next = follow_link(current.get());
        if (!next) {
            file.exists = stat(current.get(), &file.status) == 0;
            file.path = std::move(current);
            break;
        }
        current = std::move(next);
    }
    return file;
}

/// Writes content at the start of an open file. True once all of it has reached the disk.
bool write_content(int fd, std::string_view content)
{
    if (write_all(fd, content) != content.size())
        return false;
    // Pipes and devices cannot be synced, and answer EINVAL.
    return retry_on_eintr([&] { return fsync(fd); }) == 0 || errno == EINVAL;
}

/// Makes the rename itself survive a loss of power.
void sync_folder(const char* path)
{
    const unique_fd fd = path_folder_open(path);
    if (fd)
        retry_on_eintr([&] { return fsync(fd.get()); });
}

/// Whether an error means that the folder forbids the change, rather than that it failed.
bool is_refused(int error)
{
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

/// Reserves the disk space that the content needs, so that writing cannot fail half way, and cuts a
/// longer file. A file that cannot get the space stays as it is.
bool set_length(int fd, std::size_t length)
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
    return retry_on_eintr([&] { return ftruncate(fd, agreed); }) == 0 && error == 0;
}

int set_mode(int fd, mode_t mode)
{
    return retry_on_eintr([&] { return fchmod(fd, mode); });
}

/// Takes rights away that the content is not for. Devices and pipes keep theirs.
bool restrict_readers(int fd, const replaced_file& file)
{
    const bool is_kept = (file.status.st_mode & permission_bits) == file.mode;
    return is_kept || !S_ISREG(file.status.st_mode) || set_mode(fd, file.mode) == 0;
}

bool write_in_place(const replaced_file& file, std::string_view content)
{
    const unique_fd fd{
        retry_on_eintr([&] { return open(file.path.get(), O_WRONLY | O_NONBLOCK | O_CLOEXEC); })};
    return fd && restrict_readers(fd.get(), file) && set_length(fd.get(), content.size()) &&
           write_content(fd.get(), content);
}

int set_owner(int fd, uid_t user, gid_t group)
{
    return retry_on_eintr([&] { return fchown(fd, user, group); });
}

/// Gives the new file its mode, and the old one's owner if that is allowed.
bool copy_attributes(int fd, const replaced_file& file)
{
    const struct stat& status = file.status;
    if (set_owner(fd, status.st_uid, status.st_gid) != 0) {
        if (errno != EPERM)
            return false;
        // We may not change the owner; at least the group that may read it stays the same.
        set_owner(fd, static_cast<uid_t>(-1), status.st_gid);
    }
    return set_mode(fd, file.mode) == 0;
}

bool write_beside(const replaced_file& file, const unfinished_file& beside,
                  std::string_view content)
{
    const bool is_ready = !file.exists || copy_attributes(beside.fd.get(), file);
    const bool is_written = is_ready && write_content(beside.fd.get(), content);
    const auto put_in_place = [&] { return rename(beside.name.get(), file.path.get()); };
    if (is_written && retry_on_eintr(put_in_place) == 0) {
        sync_folder(file.path.get());
        return true;
    }
    const int rename_error = is_written ? errno : 0;
    unlink(beside.name.get());
    // Some folders let only a file's owner replace it, and a mounted file cannot be replaced.
    return file.exists && is_refused(rename_error) && write_in_place(file, content);
}

} // namespace

bool file_replace(const char* path, std::string_view content, file_readers readers)
{
    replaced_file file = find_file(path);
    if (!file.path)
        return false;
    const mode_t withheld = readers == file_readers::owner_only ? rights_of_others : 0;
    file.mode = file.status.st_mode & permission_bits & ~withheld;
    if (file.exists && access(file.path.get(), W_OK) != 0)
        return false;
    if (file.exists && !S_ISREG(file.status.st_mode))
        return write_in_place(file, content);
    unfinished_files_remove(file.path.get());
    const unfinished_file beside = unfinished_file_new(file.path.get());
    if (!beside.fd)
        return file.exists && is_refused(errno) && write_in_place(file, content);
    return write_beside(file, beside, content);
}
